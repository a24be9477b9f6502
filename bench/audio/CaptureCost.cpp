// What a recording costs: the processor time of the microphone, the system's sound and the encoder in this
// process, beside `parec` piped into `ffmpeg` with the same encoder, which record the same microphone at the
// same time. Another program plays, so that both sides have something to do.
//
//     CaptureCost [SECONDS]

#include "platform/Platform.h"
#include "platform/linux/audio/LinuxAudio.h"
#include "platform/linux/media/FastStartRewriter.h"
#include "platform/linux/media/LinuxMedia.h"
#include "support/Await.h"
#include "support/TonePlayback.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <deque>
#include <mutex>

using namespace talvenor;

namespace {

/// Seconds of processor time that this process has used, all its threads together.
double ownProcessorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The same for another process, from the 14th and 15th field of its stat file (proc(5)).
double processorSeconds(qint64 process)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(process));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = stat.readAll();
    // The second field holds the program's name, which may contain blanks.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return (fields.at(11).toDouble() + fields.at(12).toDouble()) / double(sysconf(_SC_CLK_TCK));
}

/// The system's sound on its way to the tap.
class Handover final : public SystemAudioOutput
{
public:
    void didOutputSampleBuffer(const SampleBuffer &buffer, StreamOutputType) override
    {
        const auto *const samples = static_cast<const float *>(buffer.data);
        const std::lock_guard guard(m_lock);
        m_samples.insert(m_samples.end(), samples, samples + buffer.byteLength / sizeof(float));
    }

    void addTo(PcmBuffer &buffer)
    {
        const std::lock_guard guard(m_lock);
        float *const target = buffer.floatChannelData()[0];
        for (std::uint32_t frame = 0; frame < buffer.frameLength() && !m_samples.empty(); ++frame) {
            target[frame] = std::clamp(target[frame] + m_samples.front(), -1.0F, 1.0F);
            m_samples.pop_front();
        }
    }

private:
    std::mutex m_lock;
    std::deque<float> m_samples; ///< guarded by m_lock
};

/// `parec` piped into `ffmpeg`.
struct Peer
{
    QProcess recorder;
    QProcess encoder;

    explicit Peer(const QString &path)
    {
        recorder.setStandardOutputProcess(&encoder);
        encoder.setProcessChannelMode(QProcess::ForwardedChannels);
        recorder.start(QStringLiteral("parec"),
                       {QStringLiteral("--raw"), QStringLiteral("--format=float32le"),
                        QStringLiteral("--rate=48000"), QStringLiteral("--channels=1"),
                        QStringLiteral("--latency-msec=85")});
        encoder.start(QStringLiteral("ffmpeg"),
                      {QStringLiteral("-nostdin"), QStringLiteral("-loglevel"), QStringLiteral("error"),
                       QStringLiteral("-f"), QStringLiteral("f32le"), QStringLiteral("-ar"),
                       QStringLiteral("48000"), QStringLiteral("-ac"), QStringLiteral("1"),
                       QStringLiteral("-i"), QStringLiteral("-"), QStringLiteral("-c:a"),
                       QStringLiteral("aac"), QStringLiteral("-b:a"), QStringLiteral("96k"),
                       QStringLiteral("-y"), path});
    }

    ~Peer()
    {
        recorder.terminate();
        recorder.waitForFinished();
        encoder.waitForFinished();
    }

    double processorSeconds() const
    {
        return ::processorSeconds(recorder.processId()) + ::processorSeconds(encoder.processId());
    }
};

void wait(int seconds)
{
    QEventLoop loop;
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    loop.exec();
}

int measure(int seconds)
{
    Platform platform;
    installLinuxAudio(platform);
    installLinuxMedia(platform);
    const QTemporaryDir folder;

    const test::ToneProcess room({.frequency = 440, .device = "room"});
    const test::ToneProcess application({.frequency = 1000, .device = "speaker"});

    const auto engine = platform.createAudioEngine();
    const AudioFormat format = test::await(engine->inputFormat());
    if (format.sampleRate <= 0) {
        std::fprintf(stderr, "CaptureCost: no microphone\n");
        return 1;
    }
    std::shared_ptr<AudioFile> file = platform.createAudioFile(folder.filePath(QStringLiteral("own.m4a")),
                                                               {.sampleRate = format.sampleRate});
    const auto handover = std::make_shared<Handover>();
    engine->installTap(4096, {format.sampleRate, 1}, [file, handover](PcmBuffer &buffer) {
        handover->addTo(buffer);
        file->write(buffer);
    });
    test::await(engine->start());
    const auto stream = platform.createSystemAudioStream({}, {.capturesAudio = true,
                                                              .excludesCurrentProcessAudio = true,
                                                              .channelCount = 1,
                                                              .sampleRate = int(format.sampleRate)});
    stream->addStreamOutput(handover, StreamOutputType::audio);
    test::await(stream->startCapture());
    const Peer peer(folder.filePath(QStringLiteral("peer.m4a")));

    wait(2); // what programs do once, at their start, is not the recording's cost
    const double ownBefore = ownProcessorSeconds();
    const double peerBefore = peer.processorSeconds();
    wait(seconds);
    const double own = (ownProcessorSeconds() - ownBefore) / seconds;
    const double other = (peer.processorSeconds() - peerBefore) / seconds;

    engine->removeTap();
    engine->stop();
    file.reset();
    waitForFastStartRewrites(); // before its folder goes
    std::printf("recording, both sides, this process: %.2f%% of a core\n", own * 100);
    std::printf("parec | ffmpeg, microphone only:      %.2f%% of a core\n", other * 100);
    std::printf("ratio: %.2f\n", other > 0 ? own / other : 0.0);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 20;
    try {
        return measure(std::max(seconds, 1));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "CaptureCost: %s\n", error.what());
        return 1;
    }
}
