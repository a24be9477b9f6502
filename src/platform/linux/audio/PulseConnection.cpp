#include "platform/linux/audio/PulseConnection.h"

#include "foundation/ProgrammingError.h"

#include <algorithm>

namespace talvenor {

namespace {

constexpr std::chrono::milliseconds kFirstBackOff{100};
constexpr std::chrono::milliseconds kLongestBackOff{1000};

} // namespace

PulseConnection::PulseConnection(Listener &listener)
    : m_listener(listener), m_loop(pa_threaded_mainloop_new()), m_backOff(kFirstBackOff)
{
    if (!m_loop)
        programmingError(QStringLiteral("libpulse has no main loop to give"));
    watchForProgramEnd();
    pa_threaded_mainloop_set_name(m_loop, "talvenor.pulse");
}

PulseConnection::~PulseConnection()
{
    close();
    pa_threaded_mainloop_free(m_loop);
}

void PulseConnection::open()
{
    {
        const Lock lock(*this);
        if (isClosed())
            throw pulseError(PA_ERR_KILLED);
        if (!m_running) {
            if (pa_threaded_mainloop_start(m_loop) < 0)
                throw pulseError(PA_ERR_INTERNAL);
            m_running = true;
        }
        if (!m_context) {
            clearTimers();
            connect();
        }
    }
    std::unique_lock guard(m_stateLock);
    const auto isAnswered = [this] {
        return m_state == State::ready || m_state == State::failed || m_state == State::closed;
    };
    waitUnlessEnding(guard, m_stateChanged, kPulseAnswerTimeout, isAnswered);
    if (!isAnswered())
        throw pulseError(PA_ERR_TIMEOUT);
    if (m_state != State::ready)
        throw pulseError(m_state == State::closed ? int(PA_ERR_KILLED) : m_errorCode);
}

void PulseConnection::close()
{
    bool wasRunning = false;
    {
        const Lock lock(*this);
        setState(State::closed, PA_ERR_KILLED);
        clearTimers();
        m_context.reset();
        wasRunning = m_running;
        m_running = false;
    }
    if (wasRunning)
        pa_threaded_mainloop_stop(m_loop);
}

pa_context *PulseConnection::context() const
{
    return m_context && pa_context_get_state(m_context.get()) == PA_CONTEXT_READY ? m_context.get() : nullptr;
}

void PulseConnection::connect()
{
    setState(State::connecting, PA_OK);
    m_context.reset(pa_context_new(pa_threaded_mainloop_get_api(m_loop), "Talvenor"));
    if (!m_context) {
        lose(PA_ERR_INTERNAL);
        return;
    }
    pa_context_set_state_callback(
        m_context.get(),
        [](pa_context *, void *self) { static_cast<PulseConnection *>(self)->contextChanged(); }, this);
    pa_context_set_subscribe_callback(
        m_context.get(),
        [](pa_context *, pa_subscription_event_type_t event, std::uint32_t index, void *self) {
            static_cast<PulseConnection *>(self)->m_listener.serverChanged(event, index);
        },
        this);
    if (pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0 && m_context)
        lose(pa_context_errno(m_context.get()));
}

void PulseConnection::contextChanged()
{
    switch (pa_context_get_state(m_context.get())) {
    case PA_CONTEXT_READY:
        m_backOff = kFirstBackOff;
        setState(State::ready, PA_OK);
        m_listener.connectionReady();
        break;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        lose(pa_context_errno(m_context.get()));
        break;
    default:
        break;
    }
}

void PulseConnection::lose(int code)
{
    clearTimers();
    m_listener.connectionLost();
    // libpulse holds a reference of its own to a context that it is reporting on.
    m_context.reset();
    setState(State::failed, code);
    if (m_reconnects)
        scheduleReconnect();
}

void PulseConnection::scheduleReconnect()
{
    const auto delay = m_backOff;
    m_backOff = std::min(m_backOff * 2, kLongestBackOff);
    after(delay, [this] {
        if (!m_context)
            connect();
    });
}

void PulseConnection::after(std::chrono::milliseconds delay, std::function<void()> action)
{
    m_timers.push_back({this, nullptr, std::move(action)});
    Timer &timer = m_timers.back();
    pa_mainloop_api *const api = pa_threaded_mainloop_get_api(m_loop);
    timeval when;
    pa_timeval_add(pa_gettimeofday(&when), pa_usec_t(std::chrono::microseconds(delay).count()));
    timer.event = api->time_new(
        api, &when,
        [](pa_mainloop_api *loop, pa_time_event *event, const timeval *, void *data) {
            auto &fired = *static_cast<Timer *>(data);
            auto &timers = fired.connection->m_timers;
            const auto what = std::move(fired.action);
            loop->time_free(event);
            timers.remove_if([&fired](const Timer &other) { return &other == &fired; });
            what();
        },
        &timer);
}

void PulseConnection::clearTimers()
{
    pa_mainloop_api *const api = pa_threaded_mainloop_get_api(m_loop);
    for (const Timer &timer : m_timers)
        api->time_free(timer.event);
    m_timers.clear();
}

bool PulseConnection::isClosed()
{
    const std::lock_guard guard(m_stateLock);
    return m_state == State::closed;
}

void PulseConnection::setState(State state, int code)
{
    const std::lock_guard guard(m_stateLock);
    if (m_state == State::closed)
        return;
    m_state = state;
    m_errorCode = code;
    m_stateChanged.notify_all();
}

} // namespace talvenor
