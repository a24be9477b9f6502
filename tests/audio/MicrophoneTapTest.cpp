#include "audio/MicrophoneTap.h"
#include "support/FakeAudio.h"
#include "support/LogCapture.h"

#include <QTest>

#include <cmath>

using namespace talvenor;
using test::FakeAudio;

namespace {

const QString channel = QStringLiteral("com.talvenor.app.AudioCapture");

/// A tap over a fake file.
struct Rig
{
    std::shared_ptr<AudioFileWriter> writer = std::make_shared<AudioFileWriter>();
    std::shared_ptr<LevelMeter> meter = std::make_shared<LevelMeter>();
    std::shared_ptr<AudioRingBuffer> ringBuffer = std::make_shared<AudioRingBuffer>();
    std::shared_ptr<test::FakeFileState> file = std::make_shared<test::FakeFileState>();
    MicrophoneTap tap{writer, meter, ringBuffer};

    Rig() { writer->setFile(std::make_unique<test::FakeAudioFile>(file, std::make_shared<test::Journal>())); }

    void process(const std::vector<float> &samples)
    {
        PcmBuffer buffer = FakeAudio::block(samples);
        tap.process(buffer);
    }
};

} // namespace

/// What happens to each block of microphone sound.
class MicrophoneTapTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutSystemAudioTheMicrophoneIsUntouched()
    {
        Rig rig;
        // Beyond full scale, too: nothing is limited where nothing is added.
        const std::vector<float> samples{0.1F, -0.2F, 1.5F, -3.0F, 1e-30F, -0.0F};
        rig.process(samples);
        QCOMPARE(rig.file->samples, samples);
    }

    void lessSystemAudioThanFramesIsMixedIntoTheFirstOnes()
    {
        Rig rig;
        rig.ringBuffer->write(std::vector<float>{0.25F, 0.5F});
        rig.process({0.25F, 0.25F, 2.0F, 0.125F});
        QCOMPARE(rig.file->samples, (std::vector<float>{0.5F, 0.75F, 2.0F, 0.125F}));
        QCOMPARE(rig.ringBuffer->availableFrames(), 0);
    }

    void moreSystemAudioThanFramesWaitsForTheNextBlock()
    {
        Rig rig;
        rig.ringBuffer->write(std::vector<float>{0.125F, 0.25F, 0.375F, 0.5F, 0.625F});
        rig.process({0, 0, 0});
        QCOMPARE(rig.file->samples, (std::vector<float>{0.125F, 0.25F, 0.375F}));
        QCOMPARE(rig.ringBuffer->availableFrames(), 2);
        rig.process({0.25F, 0.25F, 0.25F});
        QCOMPARE(rig.file->samples, (std::vector<float>{0.125F, 0.25F, 0.375F, 0.75F, 0.875F, 0.25F}));
        QCOMPARE(rig.ringBuffer->availableFrames(), 0);
    }

    void theSumIsLimitedAndDoesNotWrap()
    {
        Rig rig;
        rig.ringBuffer->write(std::vector<float>{0.5F, -0.5F, 0.5F, 3.0F, 0.1F});
        rig.process({0.8F, -0.8F, -0.8F, -1.0F, 0.2F});
        QCOMPARE(rig.file->samples, (std::vector<float>{1.0F, -1.0F, 0.5F + -0.8F, 1.0F, 0.2F + 0.1F}));
    }

    void theMixedBlockIsMetered()
    {
        Rig rig;
        rig.ringBuffer->write(std::vector<float>(100, 1.0F));
        rig.process(std::vector<float>(100, 0.0F));
        QCOMPARE(rig.meter->level(), 1.0F);
    }

    void blocksOfAnySizeAreTaken()
    {
        Rig rig;
        std::vector<float> all;
        for (const std::size_t size : {1UL, 441UL, 4'096UL, 7UL, 20'000UL}) {
            const std::vector<float> samples(size, float(size) / 65'536.0F);
            rig.process(samples);
            all.insert(all.end(), samples.begin(), samples.end());
        }
        QCOMPARE(rig.file->samples, all);
        QCOMPARE(rig.writer->totalFrames(), qint64(all.size()));
    }

    void aBlockWithoutFramesOrFloatsIsSkippedWithoutATrace()
    {
        const test::LogCapture log;
        Rig rig;
        rig.ringBuffer->write(std::vector<float>{0.5F});
        PcmBuffer empty({48'000, 1}, 8);
        empty.setFrameLength(0);
        rig.tap.process(empty);
        PcmBuffer integers = PcmBuffer::withoutFloats({48'000, 1}, 8);
        rig.tap.process(integers);
        QCOMPARE(rig.ringBuffer->availableFrames(), 1);
        QCOMPARE(rig.writer->totalFrames(), 0);
        QCOMPARE(log.texts(channel), QStringList());
        rig.process({0});
        QCOMPARE(log.texts(channel), QStringList{QStringLiteral("Tap 1: 1f total=0")});
    }

    void theLogIsThinned()
    {
        const test::LogCapture log;
        Rig rig;
        for (int i = 0; i < 401; ++i)
            rig.process(std::vector<float>(10, 0.0F));
        QCOMPARE(
            log.texts(channel),
            (QStringList{QStringLiteral("Tap 1: 10f total=0"), QStringLiteral("Tap 2: 10f total=10"),
                         QStringLiteral("Tap 3: 10f total=20"), QStringLiteral("Tap 200: 10f total=1990"),
                         QStringLiteral("Tap 400: 10f total=3990")}));
        QVERIFY(log.contains(channel, QStringLiteral("default"), QStringLiteral("Tap 1: 10f total=0")));
    }

    void aFailingFileStopsNeitherMixNorMeter()
    {
        const test::LogCapture log;
        Rig rig;
        rig.file->writeError = test::platformFailure(QStringLiteral("disk full"));
        rig.ringBuffer->write(std::vector<float>(20, 1.0F));
        rig.process(std::vector<float>(10, 0.0F));
        QCOMPARE(rig.meter->level(), 1.0F);
        QCOMPARE(rig.ringBuffer->availableFrames(), 10);
        rig.process(std::vector<float>(10, 0.0F));
        QCOMPARE(log.texts(channel).count(QStringLiteral("Write failed: disk full")), 2);
        rig.file->writeError = nullptr;
        rig.process(std::vector<float>(10, 0.5F));
        QCOMPARE(rig.writer->totalFrames(), 10);
        QCOMPARE(rig.file->samples, std::vector<float>(10, 0.5F));
    }
};

QTEST_GUILESS_MAIN(MicrophoneTapTest)
#include "MicrophoneTapTest.moc"
