#include "support/TonePlayback.h"

#include <pulse/pulseaudio.h>

#include <chrono>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>
#include <vector>

namespace talvenor::test {

namespace {

std::int64_t monotonicNanoseconds()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

struct TonePlayback::Private
{
    Tone tone;
    pa_threaded_mainloop *loop = nullptr;
    pa_context *context = nullptr;
    pa_stream *stream = nullptr;
    double phase = 0;
    std::int64_t startedAt = 0; ///< guarded by the loop's lock while the loop runs

    void wake() const { pa_threaded_mainloop_signal(loop, 0); }

    void fill(std::size_t bytes)
    {
        const std::size_t frameBytes = sizeof(float) * std::size_t(tone.channels);
        std::vector<float> block(bytes / frameBytes * std::size_t(tone.channels));
        const double amplitude = std::pow(10, tone.levelDbfs / 20);
        for (std::size_t index = 0; index < block.size(); index += std::size_t(tone.channels)) {
            const auto sample = float(amplitude * std::sin(phase));
            phase =
                std::fmod(phase + 2 * std::numbers::pi * tone.frequency / tone.rate, 2 * std::numbers::pi);
            for (std::size_t channel = 0; channel < std::size_t(tone.channels); ++channel)
                block[index + channel] = sample;
        }
        pa_stream_write(stream, block.data(), block.size() * sizeof(float), nullptr, 0, PA_SEEK_RELATIVE);
    }

    void open()
    {
        pa_context_set_state_callback(
            context, [](pa_context *, void *self) { static_cast<Private *>(self)->wake(); }, this);
        if (pa_context_connect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
            throw std::runtime_error(pa_strerror(pa_context_errno(context)));
        while (pa_context_get_state(context) != PA_CONTEXT_READY) {
            if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context)))
                throw std::runtime_error(pa_strerror(pa_context_errno(context)));
            pa_threaded_mainloop_wait(loop);
        }
        const pa_sample_spec format{PA_SAMPLE_FLOAT32LE, std::uint32_t(tone.rate),
                                    std::uint8_t(tone.channels)};
        stream = pa_stream_new(context, "tone", &format, nullptr);
        if (!stream)
            throw std::runtime_error(pa_strerror(pa_context_errno(context)));
        pa_stream_set_state_callback(
            stream, [](pa_stream *, void *self) { static_cast<Private *>(self)->wake(); }, this);
        pa_stream_set_write_callback(
            stream,
            [](pa_stream *, std::size_t bytes, void *self) { static_cast<Private *>(self)->fill(bytes); },
            this);
        pa_stream_set_started_callback(
            stream,
            [](pa_stream *, void *self) {
                auto *const me = static_cast<Private *>(self);
                if (me->startedAt == 0)
                    me->startedAt = monotonicNanoseconds();
                me->wake();
            },
            this);
        pa_buffer_attr buffer{std::uint32_t(-1), std::uint32_t(-1), std::uint32_t(-1), std::uint32_t(-1),
                              std::uint32_t(-1)};
        buffer.tlength = std::uint32_t(pa_usec_to_bytes(60'000, &format));
        const int result = pa_stream_connect_playback(stream, tone.device.constData(), &buffer,
                                                      PA_STREAM_ADJUST_LATENCY, nullptr, nullptr);
        if (result < 0)
            throw std::runtime_error(pa_strerror(pa_context_errno(context)));
        while (startedAt == 0) {
            if (!PA_STREAM_IS_GOOD(pa_stream_get_state(stream)))
                throw std::runtime_error(pa_strerror(pa_context_errno(context)));
            pa_threaded_mainloop_wait(loop);
        }
    }

    explicit Private(const Tone &what) : tone(what), loop(pa_threaded_mainloop_new())
    {
        context = pa_context_new(pa_threaded_mainloop_get_api(loop), "tone");
    }

    ~Private()
    {
        pa_threaded_mainloop_lock(loop);
        if (stream) {
            pa_stream_set_state_callback(stream, nullptr, nullptr);
            pa_stream_set_write_callback(stream, nullptr, nullptr);
            pa_stream_disconnect(stream);
            pa_stream_unref(stream);
        }
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
        pa_threaded_mainloop_unlock(loop);
        pa_threaded_mainloop_stop(loop);
        pa_threaded_mainloop_free(loop);
    }
};

TonePlayback::TonePlayback(const Tone &tone) : d(std::make_unique<Private>(tone))
{
    if (pa_threaded_mainloop_start(d->loop) < 0)
        throw std::runtime_error("the loop of libpulse did not start");
    pa_threaded_mainloop_lock(d->loop);
    try {
        d->open();
    } catch (...) {
        pa_threaded_mainloop_unlock(d->loop);
        throw;
    }
    pa_threaded_mainloop_unlock(d->loop);
}

TonePlayback::~TonePlayback() = default;

std::int64_t TonePlayback::startedAt() const
{
    return d->startedAt;
}

} // namespace talvenor::test
