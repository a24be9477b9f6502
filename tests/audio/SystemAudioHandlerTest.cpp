#include "audio/SystemAudioHandler.h"
#include "support/LogCapture.h"

#include <QProcess>
#include <QTest>

#include <cmath>
#include <cstring>

using namespace talvenor;

namespace {

const QString channel = QStringLiteral("com.talvenor.app.AudioCapture");

/// A handler with the ring buffer behind it.
struct Rig
{
    std::shared_ptr<AudioRingBuffer> ringBuffer = std::make_shared<AudioRingBuffer>();
    SystemAudioHandler handler{ringBuffer};

    void deliver(const std::vector<float> &samples, std::uint32_t channels, std::size_t byteLength)
    {
        handler.didOutputSampleBuffer({.data = samples.data(),
                                       .byteLength = byteLength,
                                       .format = AudioFormat{.sampleRate = 44'100, .channelCount = channels}},
                                      StreamOutputType::audio);
    }
    std::vector<float> unread()
    {
        std::vector<float> samples(static_cast<std::size_t>(ringBuffer->availableFrames()));
        ringBuffer->read(samples, std::ptrdiff_t(samples.size()));
        return samples;
    }
};

} // namespace

/// From deliveries of the stream to mono samples in the ring buffer.
class SystemAudioHandlerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneChannelIsTakenAsItIs()
    {
        Rig rig;
        std::vector<float> samples(1'024);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = float(i) / 512.0F; // beyond full scale, too
        rig.deliver(samples, 1, 4'096);
        QCOMPARE(rig.unread(), samples);
        QCOMPARE(rig.handler.sysCallCount(), 1);
    }

    void severalChannelsAreAveraged()
    {
        Rig rig;
        std::vector<float> samples(1'024);
        std::vector<float> means(512);
        for (std::size_t i = 0; i < means.size(); ++i) {
            samples[2 * i] = float(i) / 1'024.0F;
            samples[2 * i + 1] = -0.5F;
            means[i] = (samples[2 * i] + samples[2 * i + 1]) / 2.0F;
        }
        rig.deliver(samples, 2, 4'096);
        QCOMPARE(rig.unread(), means);
        rig.deliver({0.3F, 0.6F, 0.9F}, 3, 12);
        QCOMPARE(rig.unread(), std::vector<float>{(0.3F + 0.6F + 0.9F) / 3.0F});
    }

    void whatMakesNoWholeFrameIsLeftOut()
    {
        Rig rig;
        rig.deliver({0.5F, 0.25F, 9.0F}, 1, 10);
        QCOMPARE(rig.unread(), (std::vector<float>{0.5F, 0.25F}));
        rig.deliver({0.5F, 0.25F, 9.0F}, 2, 12);
        QCOMPARE(rig.unread(), std::vector<float>{0.375F});
    }

    void lessThanOneFrameIsNotCounted()
    {
        const test::LogCapture log;
        Rig rig;
        rig.deliver({0.5F}, 2, 4);
        rig.deliver({0.5F}, 1, 3);
        QCOMPARE(rig.handler.sysCallCount(), 0);
        QCOMPARE(rig.ringBuffer->availableFrames(), 0);
        QCOMPARE(log.texts(channel), QStringList());
    }

    void noChannelsGiveNoNumbers()
    {
        const test::LogCapture log;
        Rig rig;
        rig.deliver({0.5F, 0.25F}, 0, 8);
        const std::vector<float> samples = rig.unread();
        QCOMPARE(samples.size(), 2UL);
        QVERIFY(std::isnan(samples[0]) && std::isnan(samples[1]));
        QCOMPARE(log.texts(channel),
                 QStringList{QStringLiteral("SysAudio #1: 2 samples 44100.000000Hz 0ch")});
    }

    void onlyAudioIsTaken()
    {
        Rig rig;
        const std::vector<float> samples{0.5F};
        rig.handler.didOutputSampleBuffer(
            {.data = samples.data(), .byteLength = 4, .format = AudioFormat{48'000, 1}},
            StreamOutputType::screen);
        // Not even the missing format matters then.
        rig.handler.didOutputSampleBuffer({.data = samples.data(), .byteLength = 4, .format = std::nullopt},
                                          StreamOutputType::screen);
        QCOMPARE(rig.handler.sysCallCount(), 0);
        QCOMPARE(rig.ringBuffer->availableFrames(), 0);
    }

    void aDeliveryWithoutDataIsSkipped()
    {
        const test::LogCapture log;
        Rig rig;
        const float sample = 0.5F;
        rig.handler.didOutputSampleBuffer({.data = nullptr, .byteLength = 4, .format = std::nullopt},
                                          StreamOutputType::audio);
        rig.handler.didOutputSampleBuffer({.data = &sample, .byteLength = 0, .format = std::nullopt},
                                          StreamOutputType::audio);
        QCOMPARE(rig.handler.sysCallCount(), 0);
        QCOMPARE(rig.ringBuffer->availableFrames(), 0);
        QCOMPARE(log.texts(channel), QStringList());
    }

    void aMissingFormatEndsTheProcess()
    {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--deliver-without-format")});
        QVERIFY(child.waitForFinished());
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QVERIFY(child.readAllStandardError().contains("system audio was delivered without a format"));
    }

    void dataNeedNotBeAligned()
    {
        Rig rig;
        const std::vector<float> samples{0.5F, 0.25F, -0.5F, 1.0F};
        for (const std::uint32_t channels : {1U, 2U}) {
            std::vector<char> bytes(17);
            std::memcpy(bytes.data() + 1, samples.data(), 16);
            rig.handler.didOutputSampleBuffer(
                {.data = bytes.data() + 1, .byteLength = 16, .format = AudioFormat{48'000, channels}},
                StreamOutputType::audio);
        }
        QCOMPARE(rig.unread(), (std::vector<float>{0.5F, 0.25F, -0.5F, 1.0F, 0.375F, 0.25F}));
    }

    void onlyTheFirstThreeDeliveriesAreLogged()
    {
        const test::LogCapture log;
        Rig rig;
        for (int i = 0; i < 6; ++i)
            rig.deliver({0, 0, 0, 0}, 2, 16);
        QCOMPARE(log.texts(channel),
                 (QStringList{QStringLiteral("SysAudio #1: 2 samples 44100.000000Hz 2ch"),
                              QStringLiteral("SysAudio #2: 2 samples 44100.000000Hz 2ch"),
                              QStringLiteral("SysAudio #3: 2 samples 44100.000000Hz 2ch")}));
        QVERIFY(log.contains(channel, QStringLiteral("default"),
                             QStringLiteral("SysAudio #1: 2 samples 44100.000000Hz 2ch")));
        QCOMPARE(rig.handler.sysCallCount(), 6);
    }
};

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(QStringLiteral("--deliver-without-format"))) {
        const float sample = 0;
        SystemAudioHandler(std::make_shared<AudioRingBuffer>())
            .didOutputSampleBuffer({.data = &sample, .byteLength = 4, .format = std::nullopt},
                                   StreamOutputType::audio);
        return 0;
    }
    SystemAudioHandlerTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "SystemAudioHandlerTest.moc"
