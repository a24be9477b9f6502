#include "platform/linux/audio/MicrophoneInput.h"

#include "platform/UnifiedLog.h"

namespace talvenor {

namespace {

constexpr std::uint32_t kFragmentFrames = 4096;
constexpr std::chrono::milliseconds kSeekAgain{200};
/// A stream that says nothing for so long is given up and opened anew.
constexpr std::chrono::milliseconds kLongestQuiet{5000};

} // namespace

MicrophoneInput::MicrophoneInput(PulseConnection &connection, PacedQueue &queue)
    : m_connection(connection), m_queue(queue)
{
}

void MicrophoneInput::start(int rate, Started started)
{
    m_rate = rate;
    m_started = std::move(started);
    m_wanted = true;
    m_connection.setReconnects(true);
    connectionReady();
}

void MicrophoneInput::stop()
{
    m_wanted = false;
    m_connection.setReconnects(false);
    m_started = nullptr;
    connectionLost();
}

void MicrophoneInput::connectionReady()
{
    pa_context *const context = m_connection.context();
    if (!m_wanted || !context)
        return;
    m_subscription.reset(pa_context_subscribe(
        context, pa_subscription_mask_t(PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SERVER), nullptr,
        nullptr));
    m_seekScheduled = false;
    watch();
    seek();
}

void MicrophoneInput::connectionLost()
{
    m_subscription.reset();
    m_query.reset();
    m_seekScheduled = false;
    detach();
}

void MicrophoneInput::serverChanged(pa_subscription_event_type_t event)
{
    const auto facility = event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
    if (facility != PA_SUBSCRIPTION_EVENT_SOURCE && facility != PA_SUBSCRIPTION_EVENT_SERVER)
        return;
    // Several changes come at once when a device is plugged in; a moment later the list is complete.
    if (m_wanted && !m_stream)
        seekLater();
}

void MicrophoneInput::seekLater()
{
    if (m_seekScheduled)
        return;
    m_seekScheduled = true;
    m_connection.after(kSeekAgain, [this] {
        m_seekScheduled = false;
        seek();
    });
}

void MicrophoneInput::seek()
{
    pa_context *const context = m_connection.context();
    if (!m_wanted || !context || m_stream || m_query)
        return;
    m_query = std::make_unique<MicrophoneQuery>(context, [this](std::optional<MicrophoneDevice> device) {
        const auto finished = std::move(m_query);
        if (device)
            attach(*device);
        else
            report(PA_ERR_NOENTITY); // the next change of the sources brings us back
    });
    if (m_query && m_query->isDone())
        m_query.reset();
}

void MicrophoneInput::attach(const MicrophoneDevice &device)
{
    m_device = device;
    m_lastData = PaceClock::now();
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, device.rate, device.channels};
    m_stream.reset(pa_stream_new(m_connection.context(), "Talvenor microphone", &format, nullptr));
    if (!m_stream) {
        report(pa_context_errno(m_connection.context()));
        return;
    }
    try {
        m_converter = device.rate == std::uint32_t(m_rate)
                          ? nullptr
                          : std::make_unique<RateConverter>(int(device.rate), m_rate);
    } catch (const PlatformError &error) {
        qCCritical(platformLog).noquote() << "Microphone:" << error.errorDescription();
        m_stream.reset();
        report(PA_ERR_NOTSUPPORTED);
        return;
    }
    pa_stream_set_state_callback(
        m_stream.get(),
        [](pa_stream *, void *self) { static_cast<MicrophoneInput *>(self)->streamChanged(); }, this);
    pa_stream_set_read_callback(
        m_stream.get(),
        [](pa_stream *, std::size_t, void *self) { static_cast<MicrophoneInput *>(self)->readStream(); },
        this);
    pa_buffer_attr buffer;
    buffer.maxlength = buffer.tlength = buffer.prebuf = buffer.minreq = std::uint32_t(-1);
    buffer.fragsize = std::uint32_t(kFragmentFrames * pa_frame_size(&format));
    // Without DONT_MOVE a microphone that is unplugged silently becomes the speakers' monitor.
    const auto flags = pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_record(m_stream.get(), device.name.constData(), &buffer, flags) < 0) {
        const int code = pa_context_errno(m_connection.context());
        m_stream.reset();
        report(code);
        seekLater();
    }
}

void MicrophoneInput::detach()
{
    if (!m_stream)
        return;
    m_stream.reset();
    m_converter.reset();
    m_queue.setDeviceLive(false);
}

void MicrophoneInput::streamChanged()
{
    switch (pa_stream_get_state(m_stream.get())) {
    case PA_STREAM_READY:
        qCInfo(platformLog, "Microphone attached: %s, %u Hz, %u channels", m_device.description.constData(),
               m_device.rate, unsigned(m_device.channels));
        m_lastData = PaceClock::now();
        report(PA_OK); // the receiver begins the timeline
        m_queue.setDeviceLive(true);
        break;
    case PA_STREAM_FAILED:
    case PA_STREAM_TERMINATED: {
        const int code = pa_context_errno(m_connection.context() ? m_connection.context()
                                                                 : pa_stream_get_context(m_stream.get()));
        qCWarning(platformLog, "Microphone lost: %s", m_device.description.constData());
        detach();
        report(code == PA_OK ? int(PA_ERR_KILLED) : code);
        seekLater();
        break;
    }
    default:
        break;
    }
}

void MicrophoneInput::readStream()
{
    while (m_stream && pa_stream_readable_size(m_stream.get()) > 0) {
        const void *data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(m_stream.get(), &data, &bytes) < 0 || bytes == 0)
            return;
        const std::size_t frameBytes = sizeof(float) * m_device.channels;
        take(static_cast<const float *>(data), bytes / frameBytes);
        pa_stream_drop(m_stream.get());
        m_lastData = PaceClock::now();
    }
}

void MicrophoneInput::take(const float *frames, std::size_t count)
{
    m_mono.assign(count, 0.0F);
    // A hole in the stream has a length but no data: it stays silent.
    if (frames) {
        // The plain average: the servers' own down-mixes differ from each other by 3 dB.
        const std::size_t channels = m_device.channels;
        const float share = 1.0F / float(channels);
        for (std::size_t frame = 0; frame < count; ++frame) {
            float sum = 0;
            for (std::size_t channel = 0; channel < channels; ++channel)
                sum += frames[frame * channels + channel];
            m_mono[frame] = sum * share;
        }
    }
    m_queue.push(m_converter ? m_converter->convert(m_mono) : std::span<const float>(m_mono));
}

/// Looks once in a while whether a stream that seems alive still says something.
void MicrophoneInput::watch()
{
    m_connection.after(kLongestQuiet / 2, [this] {
        if (m_stream && PaceClock::now() - m_lastData > kLongestQuiet) {
            qCWarning(platformLog, "Microphone silent: %s", m_device.description.constData());
            detach();
            seek();
        }
        watch();
    });
}

void MicrophoneInput::report(int errorCode)
{
    if (const Started started = std::exchange(m_started, nullptr))
        started(errorCode);
}

} // namespace talvenor
