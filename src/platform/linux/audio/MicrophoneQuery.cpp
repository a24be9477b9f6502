#include "platform/linux/audio/MicrophoneQuery.h"

namespace talvenor {

namespace {

bool isMonitor(const pa_source_info &source)
{
    const char *const deviceClass = pa_proplist_gets(source.proplist, PA_PROP_DEVICE_CLASS);
    return source.monitor_of_sink != PA_INVALID_INDEX ||
           (deviceClass && qstrcmp(deviceClass, "monitor") == 0);
}

bool isPluggedIn(const pa_source_info &source)
{
    return !source.active_port || source.active_port->available != PA_PORT_AVAILABLE_NO;
}

} // namespace

MicrophoneQuery::MicrophoneQuery(pa_context *context, Answer answer)
    : m_context(context), m_answer(std::move(answer))
{
    m_request.reset(pa_context_get_server_info(
        context,
        [](pa_context *, const pa_server_info *server, void *self) {
            static_cast<MicrophoneQuery *>(self)->serverTold(server);
        },
        this));
    if (!m_request)
        finish();
}

void MicrophoneQuery::serverTold(const pa_server_info *server)
{
    if (server && server->default_source_name)
        m_defaultName = server->default_source_name;
    m_request.reset(pa_context_get_source_info_list(
        m_context,
        [](pa_context *, const pa_source_info *source, int endOfList, void *self) {
            auto *const query = static_cast<MicrophoneQuery *>(self);
            if (endOfList)
                query->finish();
            else
                query->sourceTold(source);
        },
        this));
    if (!m_request)
        finish();
}

void MicrophoneQuery::sourceTold(const pa_source_info *source)
{
    if (isMonitor(*source))
        return;
    const int rank = m_defaultName == source->name ? 3 : isPluggedIn(*source) ? 2 : 1;
    if (rank <= m_bestRank)
        return;
    m_bestRank = rank;
    m_best = MicrophoneDevice{source->name, source->description, source->sample_spec.rate,
                              source->sample_spec.channels};
}

void MicrophoneQuery::finish()
{
    // The receiver may destroy this object: nothing of it is touched after the call.
    const Answer answer = std::exchange(m_answer, nullptr);
    auto best = std::move(m_best);
    answer(std::move(best));
}

} // namespace talvenor
