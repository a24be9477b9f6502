#include "platform/linux/media/FragmentMuxer.h"

#include "platform/linux/media/LibavError.h"

extern "C" {
#include <libavutil/dict.h>
}

#include <cerrno>
#include <exception>
#include <utility>

namespace talvenor {

namespace {

constexpr int ioBufferSize = 32 * 1'024;

QString whatFailed()
{
    return QStringLiteral("The audio could not be put into a file");
}

} // namespace

FragmentMuxer::FragmentMuxer(const AVCodecContext &encoder)
    : m_packetTimeBase(encoder.time_base), m_fragmentLength(encoder.sample_rate)
{
    AVFormatContext *muxer = nullptr;
    libavCheck(avformat_alloc_output_context2(&muxer, nullptr, "ipod", nullptr), whatFailed());
    m_muxer.reset(muxer);
    auto *ioBuffer = static_cast<unsigned char *>(av_malloc(ioBufferSize));
    if (ioBuffer == nullptr)
        throwLibavError(AVERROR(ENOMEM), whatFailed());
    // Without a seek function the muxer never goes back to what it has written.
    m_io.reset(avio_alloc_context(ioBuffer, ioBufferSize, 1, this, nullptr, &FragmentMuxer::append, nullptr));
    if (!m_io) {
        av_free(ioBuffer);
        throwLibavError(AVERROR(ENOMEM), whatFailed());
    }
    muxer->pb = m_io.get();
    AVStream *stream = avformat_new_stream(muxer, nullptr);
    if (stream == nullptr)
        throwLibavError(AVERROR(ENOMEM), whatFailed());
    stream->time_base = m_packetTimeBase;
    libavCheck(avcodec_parameters_from_context(stream->codecpar, &encoder), whatFailed());
    AVDictionary *options = nullptr;
    // The late moov tells of the encoder's delay, which an early one could not know.
    av_dict_set(&options, "movflags", "frag_custom+delay_moov+default_base_moof+skip_trailer", 0);
    const int result = avformat_write_header(muxer, &options);
    av_dict_free(&options);
    libavCheck(result, whatFailed());
}

int FragmentMuxer::append(void *self, std::uint8_t *data, int size)
{
    try {
        std::vector<std::uint8_t> &output = static_cast<FragmentMuxer *>(self)->m_output;
        output.insert(output.end(), data, data + size);
    } catch (const std::exception &) {
        return AVERROR(ENOMEM); // nothing may be thrown through libav
    }
    return size;
}

void FragmentMuxer::add(AVPacket &packet)
{
    if (m_fragmentHasPackets && packet.pts - m_fragmentStart >= m_fragmentLength)
        cut();
    if (!m_fragmentHasPackets)
        m_fragmentStart = packet.pts;
    packet.stream_index = 0;
    av_packet_rescale_ts(&packet, m_packetTimeBase, m_muxer->streams[0]->time_base);
    libavCheck(av_write_frame(m_muxer.get(), &packet), whatFailed());
    m_fragmentHasPackets = true;
    if (m_isFirstFragment)
        cut();
}

void FragmentMuxer::cut()
{
    // The first cut only writes the delayed moov.
    for (int i = 0; i < (m_isFirstFragment ? 2 : 1); ++i)
        libavCheck(av_write_frame(m_muxer.get(), nullptr), whatFailed());
    takeFragment();
    m_isFirstFragment = false;
    m_fragmentHasPackets = false;
}

void FragmentMuxer::finish()
{
    if (m_fragmentHasPackets)
        cut();
    libavCheck(av_write_trailer(m_muxer.get()), whatFailed());
    takeFragment();
}

void FragmentMuxer::takeFragment()
{
    avio_flush(m_muxer->pb);
    // Bytes that memory had no room for would leave a hole in the fragment.
    libavCheck(m_muxer->pb->error, whatFailed());
    if (m_output.empty())
        return;
    m_fragments.push_back(std::move(m_output));
    m_output.clear();
}

} // namespace talvenor
