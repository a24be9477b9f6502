#include "platform/linux/audio/PulseAudioEngine.h"

#include "foundation/ProgrammingError.h"
#include "platform/linux/audio/MicrophoneInput.h"
#include "platform/linux/audio/TapThread.h"

namespace talvenor {

namespace {

/// AAC goes no higher: faster microphones are brought down to the usual rate.
constexpr std::uint32_t kHighestRate = 96'000;
constexpr std::uint32_t kUsualRate = 48'000;

std::uint32_t deliveredRate(std::uint32_t nativeRate)
{
    return nativeRate > kHighestRate ? kUsualRate : nativeRate;
}

} // namespace

/// What the engine and its operations on the general pool share.
class PulseAudioEngine::Core final : private PulseConnection::Listener
{
public:
    Core() : m_connection(*this), m_input(m_connection, m_queue), m_tap(m_queue) {}
    ~Core() { stop(); }
    Core(const Core &) = delete;
    Core &operator=(const Core &) = delete;

    TapThread &tap() { return m_tap; }
    void endIntake() { m_queue.finish(); }

    /// General pool.
    AudioFormat inputFormat();
    /// General pool.
    void start(int tapRate);
    /// For good; waits for the tap's calls but not for the server.
    void stop();

private:
    void connectionReady() override { m_input.connectionReady(); }
    void connectionLost() override;
    void serverChanged(pa_subscription_event_type_t event, std::uint32_t) override
    {
        m_input.serverChanged(event);
    }

    std::shared_ptr<PulseAnswer<std::optional<MicrophoneDevice>>> ask();

    PacedQueue m_queue;
    PulseConnection m_connection;
    MicrophoneInput m_input;                  ///< guarded by the loop's lock
    std::unique_ptr<MicrophoneQuery> m_query; ///< guarded by the loop's lock
    TapThread m_tap;

    std::mutex m_stateLock;
    bool m_stopped = false; ///< guarded by m_stateLock
    bool m_started = false; ///< guarded by m_stateLock
};

std::shared_ptr<PulseAnswer<std::optional<MicrophoneDevice>>> PulseAudioEngine::Core::ask()
{
    auto answer = std::make_shared<PulseAnswer<std::optional<MicrophoneDevice>>>();
    const PulseConnection::Lock lock(m_connection);
    if (pa_context *const context = m_connection.context())
        m_query = std::make_unique<MicrophoneQuery>(
            context, [answer](std::optional<MicrophoneDevice> device) { answer->give(std::move(device)); });
    else
        answer->give(std::nullopt);
    return answer;
}

void PulseAudioEngine::Core::connectionLost()
{
    m_query.reset();
    m_input.connectionLost();
}

AudioFormat PulseAudioEngine::Core::inputFormat()
{
    try {
        m_connection.open();
    } catch (const PlatformError &) {
        return {}; // no sound server, no microphone
    }
    const auto device = ask()->wait(kPulseAnswerTimeout).value_or(std::nullopt);
    if (!device)
        return {};
    return {double(deliveredRate(device->rate)), device->channels};
}

void PulseAudioEngine::Core::start(int tapRate)
{
    m_connection.open();
    int rate = tapRate;
    if (rate <= 0) {
        const auto device = ask()->wait(kPulseAnswerTimeout).value_or(std::nullopt);
        if (!device)
            throw pulseError(PA_ERR_NOENTITY);
        rate = int(deliveredRate(device->rate));
    }
    const auto started = std::make_shared<PulseAnswer<int>>();
    {
        const std::lock_guard guard(m_stateLock);
        if (m_stopped)
            throw pulseError(PA_ERR_KILLED);
        if (m_started)
            return;
        m_started = true;
    }
    {
        const PulseConnection::Lock lock(m_connection);
        m_input.start(rate, [this, rate, started](int code) {
            if (code == PA_OK)
                m_queue.begin(rate);
            started->give(code);
        });
    }
    const int code = started->wait(kPulseAnswerTimeout).value_or(PA_ERR_TIMEOUT);
    const std::lock_guard guard(m_stateLock);
    if (m_stopped)
        throw pulseError(PA_ERR_KILLED);
    if (code != PA_OK) {
        const PulseConnection::Lock lock(m_connection);
        m_input.stop();
        m_started = false;
        throw pulseError(code);
    }
    m_tap.start();
}

void PulseAudioEngine::Core::stop()
{
    {
        const std::lock_guard guard(m_stateLock);
        if (m_stopped)
            return;
        m_stopped = true;
    }
    {
        const PulseConnection::Lock lock(m_connection);
        m_query.reset();
        m_input.stop();
    }
    m_connection.close();
    m_tap.stop();
}

PulseAudioEngine::PulseAudioEngine() : m_core(std::make_shared<Core>())
{
}

PulseAudioEngine::~PulseAudioEngine()
{
    m_core->tap().remove();
    m_core->stop();
}

Task<AudioFormat> PulseAudioEngine::inputFormat()
{
    // The engine may be gone when the answer comes: only the core is used from here on.
    auto work = [core = m_core] { return core->inputFormat(); };
    co_return co_await onGeneralPool(std::move(work));
}

void PulseAudioEngine::installTap(std::uint32_t bufferSize, const AudioFormat &format, Tap tap)
{
    if (format.sampleRate <= 0 || format.channelCount == 0 || !tap)
        programmingError(QStringLiteral("a tap needs a format and a receiver"));
    m_tapRate = int(format.sampleRate);
    m_core->tap().install(bufferSize, format, std::move(tap));
}

void PulseAudioEngine::endIntake()
{
    m_core->endIntake();
}

void PulseAudioEngine::removeTap()
{
    m_core->tap().remove();
}

void PulseAudioEngine::prepare()
{
    // Asking for the format has connected already; the device is opened by the start alone.
}

Task<> PulseAudioEngine::start()
{
    auto work = [core = m_core, rate = m_tapRate] { core->start(rate); };
    co_await onGeneralPool(std::move(work));
}

void PulseAudioEngine::stop()
{
    m_core->stop();
}

} // namespace talvenor
