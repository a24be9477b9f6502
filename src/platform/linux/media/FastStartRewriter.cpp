#include "platform/linux/media/FastStartRewriter.h"

#include "foundation/LocalizedError.h"
#include "foundation/ThreadPool.h"
#include "platform/UnifiedLog.h"
#include "platform/linux/media/LibavError.h"
#include "platform/linux/media/LibavPointers.h"

extern "C" {
#include <libavutil/dict.h>
}

#include <QThreadPool>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace talvenor {

namespace {

// One at a time: it is no hurry, and a disk likes it better.
QThreadPool &rewriterPool()
{
    static QThreadPool *const pool = [] {
        static_cast<void>(platformLog()); // made before the pool, so that it outlives the pool's last work
        static QThreadPool instance;
        instance.setMaxThreadCount(1);
        instance.setThreadPriority(QThread::LowPriority);
        instance.setObjectName(QStringLiteral("rewriting of recordings"));
        return &instance;
    }();
    return *pool;
}

constexpr int aacFrameSize = 1'024;

QString whatFailed()
{
    return QStringLiteral("The recording could not be rewritten");
}

// libav opens the file anew by this name, whatever has become of its path.
QByteArray nameOf(int fd)
{
    return "file:/proc/self/fd/" + QByteArray::number(fd);
}

AVInputPointer openInput(int fd)
{
    AVFormatContext *input = nullptr;
    libavCheck(avformat_open_input(&input, nameOf(fd).constData(), av_find_input_format("mov"), nullptr),
               whatFailed());
    AVInputPointer owner(input);
    libavCheck(avformat_find_stream_info(input, nullptr), whatFailed());
    if (input->nb_streams != 1)
        throwLibavError(AVERROR_INVALIDDATA, whatFailed());
    return owner;
}

/// A muxer with its open file.
struct Output
{
    explicit Output(int fd)
    {
        AVFormatContext *muxer = nullptr;
        libavCheck(avformat_alloc_output_context2(&muxer, nullptr, "ipod", nameOf(fd).constData()),
                   whatFailed());
        context.reset(muxer);
        libavCheck(avio_open(&muxer->pb, nameOf(fd).constData(), AVIO_FLAG_WRITE), whatFailed());
    }
    ~Output() { static_cast<void>(avio_closep(&context->pb)); } // `close` has told of errors
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void close() const { libavCheck(avio_closep(&context->pb), whatFailed()); }

    AVOutputPointer context;
};

// Libav may end a file that cannot be read further just as one that is over. Only a copy that holds the last
// byte of the original may take its place: a recording ends with the last packet of its last fragment.
void requireWholeInput(const AVFormatContext &input, std::int64_t endOfPackets, std::int64_t size)
{
    if (input.pb != nullptr)
        libavCheck(input.pb->error, whatFailed());
    if (endOfPackets != size)
        throwLibavError(AVERROR_INVALIDDATA, whatFailed());
}

// `size` is the input's number of bytes.
void copyPackets(AVFormatContext &input, std::int64_t size, const Output &output)
{
    AVFormatContext &muxer = *output.context;
    const AVStream &from = *input.streams[0];
    AVStream *to = avformat_new_stream(&muxer, nullptr);
    if (to == nullptr)
        throwLibavError(AVERROR(ENOMEM), whatFailed());
    libavCheck(avcodec_parameters_copy(to->codecpar, from.codecpar), whatFailed());
    to->codecpar->codec_tag = 0;
    to->time_base = from.time_base;
    if (to->codecpar->frame_size == 0)
        to->codecpar->frame_size = aacFrameSize; // the demuxer does not say
    AVDictionary *options = nullptr;
    av_dict_set(&options, "movflags", "+faststart", 0);
    const int header = avformat_write_header(&muxer, &options);
    av_dict_free(&options);
    libavCheck(header, whatFailed());

    const AVPacketPointer packet(av_packet_alloc());
    if (!packet)
        throwLibavError(AVERROR(ENOMEM), whatFailed());
    std::int64_t endOfPackets = 0;
    for (;;) {
        const int result = av_read_frame(&input, packet.get());
        if (result == AVERROR_EOF)
            break;
        libavCheck(result, whatFailed());
        if ((packet->flags & AV_PKT_FLAG_CORRUPT) != 0)
            throwLibavError(AVERROR_INVALIDDATA, whatFailed()); // only a part of it could be read
        endOfPackets = std::max(endOfPackets, packet->pos + packet->size);
        av_packet_rescale_ts(packet.get(), from.time_base, to->time_base);
        packet->pos = -1;
        libavCheck(av_interleaved_write_frame(&muxer, packet.get()), whatFailed());
    }
    requireWholeInput(input, endOfPackets, size);
    libavCheck(av_write_trailer(&muxer), whatFailed());
    output.close();
}

void rewrite(int fd, const QString &path)
{
    struct stat original
    {
    };
    if (::fstat(fd, &original) != 0)
        throwPosixError(errno, whatFailed());
    if (original.st_nlink == 0)
        return; // deleted, so nobody needs it
    ReplacementFile replacement(path);
    {
        const AVInputPointer input = openInput(fd);
        const Output output(replacement.fd());
        copyPackets(*input, original.st_size, output);
    }
    if (::fchmod(replacement.fd(), original.st_mode & 07777U) != 0)
        throwPosixError(errno, whatFailed());
    if (::fsync(replacement.fd()) != 0)
        throwPosixError(errno, whatFailed());
    if (!replacement.replaceIfStill(original))
        qCInfo(platformLog, "%s is another file by now and stays as it is.", qUtf8Printable(path));
}

} // namespace

void rewriteForFastStart(FileDescriptor file, QString path)
{
    auto shared = std::make_shared<FileDescriptor>(std::move(file));
    startOnPool(rewriterPool(), [shared, path = std::move(path)] {
        try {
            rewrite(shared->get(), path);
        } catch (...) {
            const QString reason = localizedDescription(std::current_exception());
            qCWarning(platformLog, "%s stays in fragments. %s", qUtf8Printable(path), qUtf8Printable(reason));
        }
    });
}

void waitForFastStartRewrites()
{
    rewriterPool().waitForDone();
}

} // namespace talvenor
