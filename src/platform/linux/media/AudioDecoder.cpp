#include "platform/linux/media/AudioDecoder.h"

#include "foundation/LocalizedError.h"
#include "platform/linux/media/LibavError.h"
#include "platform/linux/media/LibavPointers.h"
#include "platform/linux/media/Mp4Boxes.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <QFile>
#include <QFileInfo>

#include <cerrno>

namespace talvenor {

namespace {

// Beyond these a header is damaged or hostile: no sound has such a shape, and a tiny rate would let a small
// file swell to any size.
constexpr int kMaximumChannelCount = 64;
constexpr int kMinimumInputRate = 1'000;
constexpr int kMaximumInputRate = 1'000'000;

// A decoder that only fails has nothing more to give.
constexpr int kMaximumFailuresInARow = 1'000;

const QString &cannotBeOpened()
{
    static const QString text = QStringLiteral("The audio file cannot be opened");
    return text;
}

QString cannotBeRead()
{
    return QStringLiteral("The audio file cannot be read to its end");
}

[[noreturn]] void throwNoAudio(int code)
{
    throw PlatformError(QStringLiteral("libav"), code,
                        QStringLiteral("The file contains no audio that can be read."));
}

void requireRegularFile(const QString &path)
{
    // A device or a pipe might never end, and libav's own texts tell less about these cases.
    QFile file(path);
    const QFileInfo information(path);
    if (information.exists() && !information.isFile())
        throw PlatformError(QStringLiteral("file"), EINVAL,
                            cannotBeOpened() + QStringLiteral(": It is not a regular file"));
    if (!file.open(QIODevice::ReadOnly))
        throw PlatformError(QStringLiteral("file"), information.exists() ? EACCES : ENOENT,
                            cannotBeOpened() + QStringLiteral(": ") + file.errorString());
    if (file.size() == 0)
        throw PlatformError(QStringLiteral("file"), ENODATA, QStringLiteral("The audio file is empty."));
}

// Null if libav finds no audio there; `result` is then its reason.
AVInputPointer openUrl(const QByteArray &url, int &result)
{
    AVFormatContext *context = nullptr;
    AVDictionary *options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file,subfile", 0);
    av_dict_set(&options, "format_whitelist", AudioDecoder::kFormats, 0);
    result = avformat_open_input(&context, url.constData(), nullptr, &options);
    av_dict_free(&options);
    AVInputPointer input(context); // null after a failure
    if (result >= 0)
        result = avformat_find_stream_info(input.get(), nullptr);
    return result < 0 ? nullptr : std::move(input);
}

AVInputPointer openInput(const QString &path)
{
    requireRegularFile(path);
    // The scheme in front keeps libav from reading one out of the path.
    const QByteArray url = "file:" + QFile::encodeName(path);
    int result = 0;
    AVInputPointer input = openUrl(url, result);
    if (!input) {
        // libav rejects a file that breaks off within the head of a fragment; without that piece it is whole.
        if (const std::optional<qint64> end = endOfWholeBoxes(path))
            input = openUrl("subfile,,start,0,end," + QByteArray::number(*end) + ",,:" + url, result);
    }
    if (!input)
        throwNoAudio(result);
    return input;
}

} // namespace

/// The chain from packets to samples.
class AudioDecoder::Decoding
{
public:
    explicit Decoding(const QString &path) : m_input(openInput(path))
    {
        const AVCodec *codec = nullptr;
        m_stream = av_find_best_stream(m_input.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
        if (m_stream < 0)
            throwNoAudio(m_stream);
        for (unsigned index = 0; index < m_input->nb_streams; ++index) {
            if (static_cast<int>(index) != m_stream)
                m_input->streams[index]->discard = AVDISCARD_ALL;
        }
        const AVStream *stream = m_input->streams[m_stream];
        m_codec.reset(avcodec_alloc_context3(codec));
        m_frame.reset(av_frame_alloc());
        m_packet.reset(av_packet_alloc());
        if (!m_codec || !m_frame || !m_packet)
            throwLibavError(AVERROR(ENOMEM), cannotBeOpened());
        libavCheck(avcodec_parameters_to_context(m_codec.get(), stream->codecpar), cannotBeOpened());
        // Lets the decoder leave out the encoder's lead-in, so that times are right to the millisecond.
        m_codec->pkt_timebase = stream->time_base;
        if (const int result = avcodec_open2(m_codec.get(), codec, nullptr); result < 0)
            throwNoAudio(result);
    }

    [[nodiscard]] bool read(std::vector<std::int16_t> &samples)
    {
        samples.clear();
        while (samples.empty() && !m_ended)
            decodeFrame(samples);
        if (samples.empty() && !m_hasDecoded)
            throwNoAudio(AVERROR_INVALIDDATA);
        return !samples.empty();
    }

    [[nodiscard]] double duration() const
    {
        return m_input->duration > 0 ? double(m_input->duration) / AV_TIME_BASE : 0;
    }

private:
    void decodeFrame(std::vector<std::int16_t> &samples)
    {
        const int result = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (result == AVERROR(EAGAIN)) {
            sendPacket();
        } else if (result == AVERROR_EOF) {
            m_ended = true;
            drainResampler(samples);
        } else if (result >= 0) {
            resample(samples);
            av_frame_unref(m_frame.get());
            m_failuresInARow = 0;
        } else if (++m_failuresInARow > kMaximumFailuresInARow) {
            m_ended = true;
        }
        // Other errors concern a damaged frame: the next one is tried.
    }

    void sendPacket()
    {
        for (;;) {
            if (av_read_frame(m_input.get(), m_packet.get()) < 0) {
                // The end, or the place where the file breaks off; but what the disk does not give is not an
                // end, though libav may call it one.
                if (m_input->pb != nullptr)
                    libavCheck(m_input->pb->error, cannotBeRead());
                avcodec_send_packet(m_codec.get(), nullptr);
                return;
            }
            const bool ours = m_packet->stream_index == m_stream;
            const int result = ours ? avcodec_send_packet(m_codec.get(), m_packet.get()) : 0;
            av_packet_unref(m_packet.get());
            if (ours && result >= 0)
                return;
            // Packets that the decoder refuses are damaged and left out.
        }
    }

    void resample(std::vector<std::int16_t> &samples)
    {
        const AVFrame &frame = *m_frame;
        if (frame.nb_samples <= 0 || frame.sample_rate < kMinimumInputRate ||
            frame.sample_rate > kMaximumInputRate || frame.ch_layout.nb_channels <= 0 ||
            frame.ch_layout.nb_channels > kMaximumChannelCount)
            return;
        if (!m_resampler || frame.sample_rate != m_inputRate || frame.format != m_inputFormat ||
            frame.ch_layout.nb_channels != m_inputChannels) {
            drainResampler(samples);
            makeResampler();
        }
        appendConverted(samples, frame.extended_data, frame.nb_samples);
        m_hasDecoded = true;
    }

    void makeResampler()
    {
        m_inputRate = m_frame->sample_rate;
        m_inputFormat = m_frame->format;
        m_inputChannels = m_frame->ch_layout.nb_channels;
        AVChannelLayout from{};
        // Without a known order of the channels there is a usual one for their number.
        if (m_frame->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
            av_channel_layout_default(&from, m_inputChannels);
        else
            libavCheck(av_channel_layout_copy(&from, &m_frame->ch_layout), cannotBeOpened());
        AVChannelLayout mono{};
        av_channel_layout_default(&mono, 1);
        SwrContext *resampler = nullptr;
        int result = swr_alloc_set_opts2(&resampler, &mono, AV_SAMPLE_FMT_S16, kSampleRate, &from,
                                         static_cast<AVSampleFormat>(m_inputFormat), m_inputRate, 0, nullptr);
        av_channel_layout_uninit(&from);
        m_resampler.reset(resampler);
        if (result >= 0)
            result = swr_init(m_resampler.get());
        if (result < 0)
            throwNoAudio(result);
    }

    void drainResampler(std::vector<std::int16_t> &samples)
    {
        if (m_resampler)
            appendConverted(samples, nullptr, 0);
        m_resampler.reset();
    }

    void appendConverted(std::vector<std::int16_t> &samples, std::uint8_t **data, int count)
    {
        const int room = swr_get_out_samples(m_resampler.get(), count);
        if (room <= 0)
            return;
        const std::size_t before = samples.size();
        samples.resize(before + static_cast<std::size_t>(room));
        // libav wants planes of bytes, whatever the samples are.
        auto *out = reinterpret_cast<std::uint8_t *>(samples.data() + before);
        auto **in = const_cast<const std::uint8_t **>(data);
        const int converted = swr_convert(m_resampler.get(), &out, room, in, count);
        samples.resize(before + static_cast<std::size_t>(std::max(0, converted)));
    }

    AVInputPointer m_input;
    AVCodecContextPointer m_codec;
    AVFramePointer m_frame;
    AVPacketPointer m_packet;
    SwrContextPointer m_resampler;
    int m_stream = -1;
    int m_inputRate = 0;
    int m_inputFormat = -1;
    int m_inputChannels = 0;
    int m_failuresInARow = 0;
    bool m_ended = false;
    bool m_hasDecoded = false;
};

AudioDecoder::AudioDecoder(const QString &path) : m_decoding(std::make_unique<Decoding>(path))
{
}

AudioDecoder::~AudioDecoder() = default;

double AudioDecoder::duration() const
{
    return m_decoding->duration();
}

bool AudioDecoder::read(std::vector<std::int16_t> &samples)
{
    return m_decoding->read(samples);
}

} // namespace talvenor
