#include "platform/linux/audio/ShareableSinks.h"

#include "platform/linux/audio/PulseConnection.h"

namespace talvenor {

namespace {

/// A connection for one question.
class SinkList final : private PulseConnection::Listener
{
public:
    ~SinkList() { m_connection.close(); }

    /// Blocks: general pool.
    ShareableContent ask()
    {
        m_connection.open();
        {
            const PulseConnection::Lock lock(m_connection);
            if (pa_context *const context = m_connection.context())
                m_request.reset(pa_context_get_sink_info_list(context, sinkTold, this));
            if (!m_request)
                throw pulseError(PA_ERR_CONNECTIONTERMINATED);
        }
        const auto code = m_outcome.wait(kPulseAnswerTimeout);
        const PulseConnection::Lock lock(m_connection);
        m_request.reset();
        if (code != PA_OK)
            throw pulseError(code.value_or(PA_ERR_TIMEOUT));
        return m_content;
    }

private:
    static void sinkTold(pa_context *context, const pa_sink_info *sink, int endOfList, void *self)
    {
        auto *const list = static_cast<SinkList *>(self);
        if (endOfList != 0)
            list->m_outcome.give(endOfList > 0 ? int(PA_OK) : pa_context_errno(context));
        else
            list->m_content.displays.append({QString::fromUtf8(sink->name)});
    }

    void connectionReady() override {}
    void connectionLost() override
    {
        m_request.reset();
        m_outcome.give(PA_ERR_CONNECTIONTERMINATED);
    }
    void serverChanged(pa_subscription_event_type_t, std::uint32_t) override {}

    PulseAnswer<int> m_outcome;
    ShareableContent m_content;      ///< guarded by the loop's lock
    PulseOperationPointer m_request; ///< guarded by the loop's lock
    PulseConnection m_connection{*this};
};

} // namespace

Task<ShareableContent> shareableSinks()
{
    auto work = [] { return SinkList().ask(); };
    co_return co_await onGeneralPool(std::move(work));
}

} // namespace talvenor
