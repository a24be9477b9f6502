#include "platform/linux/media/AacEncoder.h"

#include "foundation/LocalizedError.h"
#include "platform/linux/media/LibavError.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace talvenor {

namespace {

constexpr double highestInputRate = 768'000;
constexpr std::int64_t fullBitRate = 96'000;
constexpr int fullBitRateFrom = 44'100;

QString whatFailed()
{
    return QStringLiteral("The audio could not be encoded");
}

int nextAacRate(const AVCodec &codec, int rate)
{
    int next = std::numeric_limits<int>::max();
    int highest = 0;
    for (const int *known = codec.supported_samplerates; known != nullptr && *known != 0; ++known) {
        highest = std::max(highest, *known);
        if (*known >= rate)
            next = std::min(next, *known);
    }
    return std::min(next, highest);
}

template<typename Pointer>
Pointer allocated(Pointer pointer)
{
    if (!pointer)
        throwLibavError(AVERROR(ENOMEM), whatFailed());
    return pointer;
}

} // namespace

AacEncoder::AacEncoder(double sampleRate, PacketSink sink) : m_sink(std::move(sink))
{
    if (!(sampleRate >= 1) || sampleRate > highestInputRate) {
        throw PlatformError(
            QStringLiteral("libav"), AVERROR(EINVAL),
            QStringLiteral("%1 Hz is not a sample rate that can be recorded.").arg(sampleRate));
    }
    const int inputRate = int(std::lround(sampleRate));
    const AVCodec *codec = avcodec_find_encoder_by_name("aac");
    if (codec == nullptr)
        throwLibavError(AVERROR_ENCODER_NOT_FOUND, whatFailed());
    m_outputRate = nextAacRate(*codec, inputRate);

    m_encoder = allocated(AVCodecContextPointer(avcodec_alloc_context3(codec)));
    m_encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
    m_encoder->sample_rate = m_outputRate;
    m_encoder->time_base = {1, m_outputRate};
    av_channel_layout_default(&m_encoder->ch_layout, 1);
    m_encoder->bit_rate = fullBitRate * std::min(m_outputRate, fullBitRateFrom) / fullBitRateFrom;
    m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    m_encoder->thread_count = 1;
    libavCheck(avcodec_open2(m_encoder.get(), codec, nullptr), whatFailed());
    if (inputRate != m_outputRate)
        openResampler(inputRate);

    m_packet = allocated(AVPacketPointer(av_packet_alloc()));
    m_frame = allocated(AVFramePointer(av_frame_alloc()));
    m_frame->format = m_encoder->sample_fmt;
    m_frame->sample_rate = m_outputRate;
    m_frame->nb_samples = m_encoder->frame_size;
    libavCheck(av_channel_layout_copy(&m_frame->ch_layout, &m_encoder->ch_layout), whatFailed());
    libavCheck(av_frame_get_buffer(m_frame.get(), 0), whatFailed());
}

void AacEncoder::openResampler(int inputRate)
{
    SwrContext *resampler = nullptr;
    AVChannelLayout &mono = m_encoder->ch_layout; // libav 5 takes layouts without const
    const int result = swr_alloc_set_opts2(&resampler, &mono, AV_SAMPLE_FMT_FLTP, m_outputRate, &mono,
                                           AV_SAMPLE_FMT_FLTP, inputRate, 0, nullptr);
    m_resampler.reset(resampler);
    libavCheck(result, whatFailed());
    libavCheck(swr_init(m_resampler.get()), whatFailed());
}

void AacEncoder::encode(std::span<const float> samples)
{
    // libav counts in int; a block of sound never comes near, but its sender is free to send more.
    constexpr std::size_t most = 1U << 20U;
    while (!samples.empty()) {
        const std::span<const float> part = samples.first(std::min(samples.size(), most));
        if (m_resampler)
            resample(part.data(), int(part.size()));
        else
            fillFrames(part);
        samples = samples.subspan(part.size());
    }
}

void AacEncoder::resample(const float *samples, int count)
{
    m_resampled.resize(std::size_t(libavCheck(swr_get_out_samples(m_resampler.get(), count), whatFailed())));
    auto *output = reinterpret_cast<std::uint8_t *>(m_resampled.data());
    const auto *input = reinterpret_cast<const std::uint8_t *>(samples);
    const int made = libavCheck(swr_convert(m_resampler.get(), &output, int(m_resampled.size()),
                                            samples != nullptr ? &input : nullptr, count),
                                whatFailed());
    fillFrames(std::span(m_resampled).first(std::size_t(made)));
}

void AacEncoder::fillFrames(std::span<const float> samples)
{
    while (!samples.empty()) {
        if (m_filled == 0) // the encoder may still hold what was sent last
            libavCheck(av_frame_make_writable(m_frame.get()), whatFailed());
        auto *frame = reinterpret_cast<float *>(m_frame->data[0]);
        const std::size_t count =
            std::min(samples.size(), std::size_t(m_encoder->frame_size) - std::size_t(m_filled));
        std::transform(samples.begin(), samples.begin() + std::ptrdiff_t(count), frame + m_filled,
                       [](float sample) { return std::isfinite(sample) ? sample : 0.0F; });
        m_filled += int(count);
        samples = samples.subspan(count);
        if (m_filled == m_encoder->frame_size)
            sendFrame();
    }
}

void AacEncoder::sendFrame()
{
    m_frame->nb_samples = m_filled;
    m_frame->pts = m_nextTimestamp;
    m_nextTimestamp += m_filled;
    m_filled = 0; // whatever becomes of it, the next frame is a new one
    libavCheck(avcodec_send_frame(m_encoder.get(), m_frame.get()), whatFailed());
    receivePackets();
}

void AacEncoder::receivePackets()
{
    for (;;) {
        const int result = avcodec_receive_packet(m_encoder.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        libavCheck(result, whatFailed());
        m_sink(*m_packet);
        av_packet_unref(m_packet.get());
    }
}

void AacEncoder::finish()
{
    if (m_resampler)
        resample(nullptr, 0);
    if (m_nextTimestamp == 0 && m_filled == 0) {
        // A file without a single packet is none: players and recognisers take it for broken.
        fillFrames(std::vector<float>(std::size_t(m_encoder->frame_size), 0.0F));
    }
    if (m_filled > 0)
        sendFrame();
    libavCheck(avcodec_send_frame(m_encoder.get(), nullptr), whatFailed());
    receivePackets();
}

} // namespace talvenor
