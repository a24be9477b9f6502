#include "platform/linux/audio/SinkInputMonitors.h"

#include "platform/UnifiedLog.h"

#include <unistd.h>

#include <algorithm>
#include <array>

namespace talvenor {

namespace {

constexpr int kFragmentsPerSecond = 50;
constexpr std::uint8_t kChannels = 2;
constexpr std::chrono::milliseconds kFirstBackOff{20};
constexpr std::chrono::milliseconds kLongestBackOff{2000};
constexpr std::chrono::milliseconds kMuteTimeout{2000};
constexpr int kMutedAttempts = 3;

/// A program's file name; one that was replaced by an update while it runs is still the same program.
QByteArray programName(QByteArray name)
{
    constexpr QByteArrayView deleted(" (deleted)");
    if (name.endsWith(deleted))
        name.chop(deleted.size());
    return name;
}

QByteArray ownProgramName()
{
    std::array<char, 4096> name{};
    return pa_get_binary_name(name.data(), name.size()) ? programName(name.data()) : QByteArray();
}

} // namespace

SinkInputMonitors::SinkInputMonitors(PulseConnection &connection, SoundMixer &mixer)
    : m_connection(connection), m_mixer(mixer), m_processId(QByteArray::number(qint64(getpid()))),
      m_processBinary(ownProgramName())
{
}

SinkInputMonitors::~SinkInputMonitors() = default;

void SinkInputMonitors::start(int rate, bool excludesCurrentProcess)
{
    m_rate = rate;
    m_excludesCurrentProcess = excludesCurrentProcess;
    m_wanted = true;
    m_connection.setReconnects(true);
    connectionReady();
}

void SinkInputMonitors::stop()
{
    m_wanted = false;
    m_connection.setReconnects(false);
    connectionLost();
}

void SinkInputMonitors::connectionReady()
{
    pa_context *const context = m_connection.context();
    if (!m_wanted || !context)
        return;
    // Subscribed first and listed then, so that no input can slip through between.
    m_subscription.reset(pa_context_subscribe(context, PA_SUBSCRIPTION_MASK_SINK_INPUT, nullptr, nullptr));
    m_listing.reset(pa_context_get_sink_input_info_list(
        context,
        [](pa_context *, const pa_sink_input_info *input, int endOfList, void *self) {
            if (!endOfList)
                static_cast<SinkInputMonitors *>(self)->ask(input->index);
        },
        this));
}

void SinkInputMonitors::connectionLost()
{
    m_subscription.reset();
    m_listing.reset();
    m_questions.clear();
    for (auto &[index, monitor] : m_monitors)
        monitor.input->end();
    m_monitors.clear();
}

void SinkInputMonitors::serverChanged(pa_subscription_event_type_t event, std::uint32_t index)
{
    if (!m_wanted || (event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) != PA_SUBSCRIPTION_EVENT_SINK_INPUT)
        return;
    if ((event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE) {
        m_questions.erase(index);
        forget(index);
        return;
    }
    const auto monitor = m_monitors.find(index);
    // Volume and title change often and concern nobody here; a stream that stands follows its input.
    if (monitor == m_monitors.end() || !monitor->second.context)
        ask(index);
}

void SinkInputMonitors::ask(std::uint32_t index)
{
    pa_context *const context = m_connection.context();
    if (!context)
        return;
    const auto [place, isNew] = m_questions.try_emplace(index);
    Question &question = place->second;
    if (!isNew) {
        question.again = true;
        return;
    }
    question.owner = this;
    question.index = index;
    question.request.reset(pa_context_get_sink_input_info(
        context, index,
        [](pa_context *, const pa_sink_input_info *input, int endOfList, void *data) {
            auto &asked = *static_cast<Question *>(data);
            asked.owner->inputTold(asked, input, endOfList);
        },
        &question));
    if (!question.request)
        m_questions.erase(place);
}

void SinkInputMonitors::inputTold(Question &question, const pa_sink_input_info *input, int endOfList)
{
    if (!endOfList) {
        question.found = true;
        question.sink = input->sink;
        question.client = input->client;
        question.isLoopback =
            input->client == PA_INVALID_INDEX || pa_proplist_contains(input->proplist, "node.link-group") > 0;
        readProcess(question, input->proplist);
        return;
    }
    if (!question.found) {
        const std::uint32_t index = question.index;
        m_questions.erase(index);
        forget(index);
        return;
    }
    if (question.isLoopback || question.namesProcess) {
        decide(question);
        return;
    }
    question.request.reset(pa_context_get_client_info(
        m_connection.context(), question.client,
        [](pa_context *, const pa_client_info *client, int end, void *data) {
            auto &asked = *static_cast<Question *>(data);
            asked.owner->clientTold(asked, client, end);
        },
        &question));
    if (!question.request)
        m_questions.erase(question.index);
}

void SinkInputMonitors::clientTold(Question &question, const pa_client_info *client, int endOfList)
{
    if (endOfList)
        decide(question);
    else
        readProcess(question, client->proplist);
}

void SinkInputMonitors::readProcess(Question &question, const pa_proplist *properties) const
{
    const char *const id = pa_proplist_gets(properties, PA_PROP_APPLICATION_PROCESS_ID);
    if (!id)
        return;
    question.namesProcess = true;
    // Two sandboxes can hold processes of the same number: the program has to be the same as well.
    const char *const binary = pa_proplist_gets(properties, PA_PROP_APPLICATION_PROCESS_BINARY);
    question.isOwn =
        m_processId == id && (!binary || m_processBinary.isEmpty() || programName(binary) == m_processBinary);
}

void SinkInputMonitors::decide(Question &question)
{
    const std::uint32_t index = question.index;
    const bool again = question.again;
    const bool isWanted = question.sink != PA_INVALID_INDEX && !question.isLoopback &&
                          !(question.isOwn && m_excludesCurrentProcess);
    m_questions.erase(index);
    if (isWanted)
        attach(index);
    else if (again)
        ask(index);
}

void SinkInputMonitors::attach(std::uint32_t index)
{
    Monitor &monitor = m_monitors[index];
    if (monitor.context || monitor.isOver)
        return;
    monitor.owner = this;
    monitor.index = index;
    if (!monitor.input) {
        monitor.input = std::make_shared<PlayingInput>(m_rate);
        m_mixer.add(monitor.input);
    }
    monitor.context.reset(pa_context_new(m_connection.loop(), "Talvenor system audio"));
    if (!monitor.context) {
        attachLater(monitor);
        return;
    }
    pa_context_set_state_callback(
        monitor.context.get(),
        [](pa_context *, void *data) {
            auto &changed = *static_cast<Monitor *>(data);
            changed.owner->contextChanged(changed);
        },
        &monitor);
    if (pa_context_connect(monitor.context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        attachLater(monitor);
}

void SinkInputMonitors::contextChanged(Monitor &monitor)
{
    const auto state = pa_context_get_state(monitor.context.get());
    if (state == PA_CONTEXT_READY)
        openStream(monitor);
    else if (!PA_CONTEXT_IS_GOOD(state))
        attachLater(monitor);
}

void SinkInputMonitors::openStream(Monitor &monitor)
{
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, std::uint32_t(m_rate), kChannels};
    monitor.stream.reset(pa_stream_new(monitor.context.get(), "Talvenor system audio", &format, nullptr));
    if (!monitor.stream || pa_stream_set_monitor_stream(monitor.stream.get(), monitor.index) < 0) {
        attachLater(monitor);
        return;
    }
    pa_stream_set_state_callback(
        monitor.stream.get(),
        [](pa_stream *, void *data) {
            auto &changed = *static_cast<Monitor *>(data);
            changed.owner->streamChanged(changed);
        },
        &monitor);
    pa_stream_set_read_callback(
        monitor.stream.get(),
        [](pa_stream *, std::size_t, void *data) {
            auto &readable = *static_cast<Monitor *>(data);
            readable.owner->readStream(readable);
        },
        &monitor);
    pa_buffer_attr buffer;
    buffer.maxlength = buffer.tlength = buffer.prebuf = buffer.minreq = std::uint32_t(-1);
    buffer.fragsize = std::uint32_t(pa_frame_size(&format)) * std::uint32_t(m_rate / kFragmentsPerSecond);
    // No device is named: the input's own sink is the one to listen at.
    const auto flags = pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_INHIBIT_AUTO_SUSPEND);
    if (pa_stream_connect_record(monitor.stream.get(), nullptr, &buffer, flags) < 0)
        attachLater(monitor);
}

void SinkInputMonitors::forget(std::uint32_t index)
{
    const auto monitor = m_monitors.find(index);
    if (monitor == m_monitors.end())
        return;
    monitor->second.input->end();
    m_monitors.erase(monitor);
}

void SinkInputMonitors::streamChanged(Monitor &monitor)
{
    const auto state = pa_stream_get_state(monitor.stream.get());
    if (state == PA_STREAM_READY) {
        monitor.backOff = {};
        checkLater(monitor);
    } else if (!PA_STREAM_IS_GOOD(state)) {
        attachLater(monitor);
    }
}

/// A stream that never says anything belongs to a program that pauses, or was set up wrongly by a server that
/// is short of time: a few fresh attempts cost nothing and mend the latter.
void SinkInputMonitors::checkLater(const Monitor &monitor)
{
    const std::uint32_t index = monitor.index;
    const pa_stream *const stream = monitor.stream.get();
    m_connection.after(kMuteTimeout, [this, index, stream] {
        const auto checked = m_monitors.find(index);
        if (checked == m_monitors.end() || checked->second.stream.get() != stream ||
            checked->second.isHeard || checked->second.mutedAttempts >= kMutedAttempts)
            return;
        ++checked->second.mutedAttempts;
        attachLater(checked->second);
    });
}

/// The stream has ended: its input moves to another sink, or ends; the server knows which. We may be inside a
/// callback of the stream or the connection, so that these are let go of only when the time has come.
void SinkInputMonitors::attachLater(Monitor &monitor)
{
    if (std::exchange(monitor.isOver, true))
        return;
    const std::uint32_t index = monitor.index;
    const auto delay = std::max(monitor.backOff, kFirstBackOff);
    monitor.backOff = std::min(delay * 2, kLongestBackOff);
    m_connection.after(delay, [this, index] {
        const auto waiting = m_monitors.find(index);
        if (waiting == m_monitors.end() || !waiting->second.isOver)
            return;
        waiting->second.stream.reset();
        waiting->second.context.reset();
        waiting->second.isOver = false;
        waiting->second.isHeard = false;
        ask(index);
    });
}

void SinkInputMonitors::readStream(Monitor &monitor)
{
    while (pa_stream_readable_size(monitor.stream.get()) > 0) {
        const void *data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(monitor.stream.get(), &data, &bytes) < 0 || bytes == 0)
            return;
        const std::size_t frames = bytes / (sizeof(float) * kChannels);
        m_mono.assign(frames, 0.0F);
        // A hole in the stream has a length but no data: it stays silent.
        if (const auto *const samples = static_cast<const float *>(data))
            for (std::size_t frame = 0; frame < frames; ++frame)
                m_mono[frame] = 0.5F * (samples[2 * frame] + samples[2 * frame + 1]);
        monitor.input->push(m_mono);
        monitor.isHeard = true;
        monitor.mutedAttempts = 0;
        pa_stream_drop(monitor.stream.get());
    }
}

} // namespace talvenor
