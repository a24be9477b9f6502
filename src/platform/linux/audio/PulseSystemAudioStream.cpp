#include "platform/linux/audio/PulseSystemAudioStream.h"

#include "foundation/ProgrammingError.h"
#include "platform/linux/audio/ClockPacer.h"
#include "platform/linux/audio/SinkInputMonitors.h"
#include "platform/linux/audio/ThreadName.h"

#include <algorithm>
#include <thread>

namespace talvenor {

namespace {

constexpr std::chrono::milliseconds kTick{20};
/// The largest delivery, when ticks have been missed.
constexpr std::int64_t kBlocksPerSecond = 10;

} // namespace

/// What the stream and its start on the general pool share.
class PulseSystemAudioStream::Core final : private PulseConnection::Listener
{
public:
    explicit Core(const SystemAudioConfiguration &configuration)
        : m_configuration(configuration), m_connection(*this), m_monitors(m_connection, m_mixer)
    {
    }
    ~Core() { stop(); }
    Core(const Core &) = delete;
    Core &operator=(const Core &) = delete;

    /// Main thread, before the start.
    void addOutput(std::shared_ptr<SystemAudioOutput> output);
    /// General pool.
    void start();
    /// Answers whether anything ran. For good.
    bool stop();

private:
    enum class State { made, starting, running, stopped };

    void connectionReady() override { m_monitors.connectionReady(); }
    void connectionLost() override { m_monitors.connectionLost(); }
    void serverChanged(pa_subscription_event_type_t event, std::uint32_t index) override
    {
        m_monitors.serverChanged(event, index);
    }

    void checkConfiguration() const;
    void run();
    void deliver(std::size_t frames);

    const SystemAudioConfiguration m_configuration;
    std::vector<std::shared_ptr<SystemAudioOutput>> m_outputs; ///< fixed once the thread runs
    SoundMixer m_mixer;
    PulseConnection m_connection;
    SinkInputMonitors m_monitors; ///< guarded by the loop's lock
    std::thread m_thread;
    std::vector<float> m_mixed;       ///< the thread's alone
    std::vector<float> m_interleaved; ///< the thread's alone

    std::mutex m_stateLock;
    std::condition_variable m_stateChanged;
    State m_state = State::made; ///< guarded by m_stateLock
};

void PulseSystemAudioStream::Core::addOutput(std::shared_ptr<SystemAudioOutput> output)
{
    const std::lock_guard guard(m_stateLock);
    if (m_state != State::made)
        throw pulseError(PA_ERR_BADSTATE);
    m_outputs.push_back(std::move(output));
}

void PulseSystemAudioStream::Core::checkConfiguration() const
{
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, std::uint32_t(std::max(m_configuration.sampleRate, 0)),
                                std::uint8_t(std::clamp(m_configuration.channelCount, 0, 255))};
    if (!pa_sample_spec_valid(&format))
        throw pulseError(PA_ERR_INVALID);
}

void PulseSystemAudioStream::Core::start()
{
    checkConfiguration();
    {
        const std::lock_guard guard(m_stateLock);
        if (m_state != State::made)
            throw pulseError(PA_ERR_BADSTATE);
        m_state = State::starting;
    }
    try {
        m_connection.open();
    } catch (...) {
        const std::lock_guard guard(m_stateLock);
        if (m_state == State::starting)
            m_state = State::made;
        throw;
    }
    const std::lock_guard guard(m_stateLock);
    if (m_state != State::starting)
        throw pulseError(PA_ERR_KILLED);
    m_state = State::running;
    if (!m_configuration.capturesAudio)
        return;
    {
        const PulseConnection::Lock lock(m_connection);
        m_monitors.start(m_configuration.sampleRate, m_configuration.excludesCurrentProcessAudio);
    }
    m_thread = std::thread([this] {
        nameThisThread("com.talvenor.sysaudio");
        run();
    });
}

bool PulseSystemAudioStream::Core::stop()
{
    State before;
    {
        const std::lock_guard guard(m_stateLock);
        before = std::exchange(m_state, State::stopped);
        m_stateChanged.notify_all();
    }
    if (before == State::stopped)
        return false;
    if (m_thread.joinable())
        m_thread.join();
    {
        const PulseConnection::Lock lock(m_connection);
        m_monitors.stop();
    }
    m_connection.close();
    return before == State::running;
}

void PulseSystemAudioStream::Core::run()
{
    const auto start = PaceClock::now();
    auto next = start;
    std::int64_t delivered = 0;
    std::unique_lock guard(m_stateLock);
    for (;;) {
        next += kTick;
        if (m_stateChanged.wait_until(guard, next, [this] { return m_state == State::stopped; }))
            return;
        guard.unlock();
        const auto now = PaceClock::now();
        const std::chrono::duration<double> elapsed = now - start;
        const auto due = std::int64_t(elapsed.count() * m_configuration.sampleRate);
        while (delivered < due) {
            const auto frames = std::min(due - delivered, m_configuration.sampleRate / kBlocksPerSecond + 1);
            deliver(std::size_t(frames));
            delivered += frames;
        }
        next = std::max(next, now - kTick); // ticks that were missed are not made up one by one
        guard.lock();
    }
}

void PulseSystemAudioStream::Core::deliver(std::size_t frames)
{
    m_mixed.resize(frames);
    m_mixer.mix(m_mixed);
    const auto channels = std::size_t(m_configuration.channelCount);
    const std::vector<float> *samples = &m_mixed;
    if (channels > 1) {
        m_interleaved.resize(frames * channels);
        for (std::size_t frame = 0; frame < frames; ++frame)
            std::fill_n(m_interleaved.begin() + std::ptrdiff_t(frame * channels), channels, m_mixed[frame]);
        samples = &m_interleaved;
    }
    const SampleBuffer buffer{
        samples->data(), samples->size() * sizeof(float),
        AudioFormat{double(m_configuration.sampleRate), std::uint32_t(m_configuration.channelCount)}};
    for (const auto &output : m_outputs)
        output->didOutputSampleBuffer(buffer, StreamOutputType::audio);
}

PulseSystemAudioStream::PulseSystemAudioStream(const SystemAudioConfiguration &configuration)
    : m_core(std::make_shared<Core>(configuration))
{
}

PulseSystemAudioStream::~PulseSystemAudioStream()
{
    // What is answered here only concerns stopCapture.
    static_cast<void>(m_core->stop());
}

void PulseSystemAudioStream::addStreamOutput(std::shared_ptr<SystemAudioOutput> output, StreamOutputType type)
{
    if (!output)
        programmingError(QStringLiteral("a stream output is missing"));
    if (type != StreamOutputType::audio)
        throw pulseError(PA_ERR_NOTSUPPORTED);
    m_core->addOutput(std::move(output));
}

Task<> PulseSystemAudioStream::startCapture()
{
    auto work = [core = m_core] { core->start(); };
    co_await onGeneralPool(std::move(work));
}

Task<> PulseSystemAudioStream::stopCapture()
{
    if (!m_core->stop())
        throw pulseError(PA_ERR_BADSTATE);
    co_return;
}

} // namespace talvenor
