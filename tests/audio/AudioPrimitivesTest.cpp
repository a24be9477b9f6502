#include "audio/AudioFileWriter.h"
#include "audio/AudioRingBuffer.h"
#include "audio/LevelMeter.h"
#include "support/FakeAudio.h"
#include "support/LogCapture.h"

#include <QTest>

#include <cmath>
#include <numeric>
#include <thread>

using namespace talvenor;
using test::FakeAudio;

namespace {

const QString channel = QStringLiteral("com.talvenor.app.AudioCapture");

/// The numbers from `first` on, `count` of them; each is exact as a float.
std::vector<float> ramp(std::ptrdiff_t first, std::ptrdiff_t count)
{
    std::vector<float> samples(static_cast<std::size_t>(count));
    std::iota(samples.begin(), samples.end(), float(first));
    return samples;
}

std::vector<float> readAll(AudioRingBuffer &buffer, std::ptrdiff_t count)
{
    std::vector<float> samples(static_cast<std::size_t>(count), -7.0F);
    buffer.read(samples, count);
    return samples;
}

/// Blocks writes until it is let go, to look at the writer meanwhile.
class SlowFile final : public AudioFile
{
public:
    SlowFile(std::atomic<bool> &writing, std::atomic<bool> &letGo, std::atomic<int> &order)
        : m_writing(writing), m_letGo(letGo), m_order(order)
    {
    }
    ~SlowFile() override { m_destroyedAt = ++m_order; }
    void write(const PcmBuffer & /*buffer*/) override
    {
        m_writing = true;
        while (!m_letGo)
            std::this_thread::yield();
        ++m_order;
    }
    static inline std::atomic<int> m_destroyedAt = 0;

private:
    std::atomic<bool> &m_writing;
    std::atomic<bool> &m_letGo;
    std::atomic<int> &m_order;
};

/// Tries to use the writer while it is being finished.
class CuriousFile final : public AudioFile
{
public:
    CuriousFile(AudioFileWriter &writer, bool &wrote) : m_writer(writer), m_wrote(wrote) {}
    ~CuriousFile() override { m_wrote = m_writer.write(FakeAudio::block({0.5F})); }
    void write(const PcmBuffer & /*buffer*/) override {}

private:
    AudioFileWriter &m_writer;
    bool &m_wrote;
};

} // namespace

/// Ring buffer, level meter and file writer.
class AudioPrimitivesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCapacityIsTenSecondsAt48kHz() { QCOMPARE(AudioRingBuffer::cap, 480'000); }

    void aFullBufferLosesItsOldestSample()
    {
        AudioRingBuffer buffer;
        for (std::ptrdiff_t i = 0; i <= AudioRingBuffer::cap; ++i)
            buffer.write(std::vector<float>{float(i)});
        QCOMPARE(buffer.availableFrames(), AudioRingBuffer::cap);
        QCOMPARE(readAll(buffer, AudioRingBuffer::cap), ramp(1, AudioRingBuffer::cap));
        QCOMPARE(buffer.availableFrames(), 0);
    }

    void oneBatchLargerThanTheBufferKeepsItsEnd_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("readBefore");
        QTest::addColumn<int>("batch");
        QTest::newRow("one more than the capacity") << 0 << 0 << 480'001;
        QTest::newRow("from the middle") << 1'234 << 34 << 480'001;
        QTest::newRow("exactly the capacity") << 77 << 0 << 480'000;
        QTest::newRow("two and a half times") << 5 << 5 << 1'200'000;
        QTest::newRow("over the edge") << 479'999 << 479'000 << 3'000;
        QTest::newRow("over the edge and too much") << 479'999 << 10 << 3'000;
    }
    void oneBatchLargerThanTheBufferKeepsItsEnd()
    {
        QFETCH(int, before);
        QFETCH(int, readBefore);
        QFETCH(int, batch);
        AudioRingBuffer whole;
        AudioRingBuffer single; // the same, sample by sample
        for (AudioRingBuffer *buffer : {&whole, &single}) {
            buffer->write(ramp(0, before));
            static_cast<void>(readAll(*buffer, readBefore)); // moves the reading position
        }
        const std::vector<float> samples = ramp(before, batch);
        whole.write(samples);
        for (const float sample : samples)
            single.write(std::span(&sample, 1));
        const std::ptrdiff_t expected =
            std::min<std::ptrdiff_t>(AudioRingBuffer::cap, before - readBefore + batch);
        QCOMPARE(whole.availableFrames(), expected);
        QCOMPARE(single.availableFrames(), expected);
        const std::vector<float> read = readAll(whole, expected);
        QCOMPARE(read, ramp(before + batch - expected, expected));
        QCOMPARE(read, readAll(single, expected));
        // And it goes on in the right place.
        whole.write(ramp(3, 5));
        QCOMPARE(readAll(whole, 5), ramp(3, 5));
    }

    void aShortReadIsPaddedWithSilence()
    {
        AudioRingBuffer buffer;
        buffer.write(ramp(1, 30));
        std::vector<float> expected = ramp(1, 30);
        expected.resize(100, 0.0F);
        QCOMPARE(readAll(buffer, 100), expected);
        QCOMPARE(buffer.availableFrames(), 0);
    }

    void aReadLeavesTheRestOfTheDestinationAlone()
    {
        AudioRingBuffer buffer;
        buffer.write(ramp(1, 2));
        std::vector<float> destination(6, -7.0F);
        buffer.read(destination, 4);
        QCOMPARE(destination, (std::vector<float>{1, 2, 0, 0, -7, -7}));
    }

    void anEmptyBufferReadsAsSilence()
    {
        AudioRingBuffer buffer;
        QCOMPARE(readAll(buffer, 50), std::vector<float>(50, 0.0F));
        QCOMPARE(readAll(buffer, 0), std::vector<float>());
    }

    void anEmptyWriteChangesNothing()
    {
        AudioRingBuffer buffer;
        buffer.write(ramp(5, 3));
        buffer.write({});
        QCOMPARE(buffer.availableFrames(), 3);
        QCOMPARE(readAll(buffer, 3), ramp(5, 3));
    }

    void aResetForgetsEverything()
    {
        AudioRingBuffer buffer;
        buffer.write(ramp(1, 479'000));
        static_cast<void>(readAll(buffer, 1'000)); // moves the reading position
        buffer.reset();
        QCOMPARE(buffer.availableFrames(), 0);
        QCOMPARE(readAll(buffer, 200), std::vector<float>(200, 0.0F));
        buffer.write(ramp(9, 4));
        QCOMPARE(readAll(buffer, 4), ramp(9, 4));
    }

    void twoThreadsLoseAndMixNothing()
    {
        AudioRingBuffer buffer;
        constexpr std::ptrdiff_t total = 400'000;
        std::thread producer([&buffer] {
            for (std::ptrdiff_t sent = 0; sent < total;) {
                const std::ptrdiff_t size = std::min<std::ptrdiff_t>(1 + sent % 977, total - sent);
                buffer.write(ramp(sent, size));
                sent += size;
            }
        });
        std::vector<float> received;
        while (std::ptrdiff_t(received.size()) < total) {
            const std::ptrdiff_t n = std::min<std::ptrdiff_t>(buffer.availableFrames(), 512);
            const std::vector<float> samples = readAll(buffer, n);
            received.insert(received.end(), samples.begin(), samples.end());
        }
        producer.join();
        QCOMPARE(received, ramp(0, total));
    }

    void silenceReadsAsZeroAndFullScaleAsOne()
    {
        LevelMeter meter;
        QCOMPARE(meter.level(), 0.0F);
        meter.update(FakeAudio::block({1, -1, 1, -1}));
        QCOMPARE(meter.level(), 1.0F);
        meter.update(FakeAudio::block({0, 0, 0, 0}));
        QCOMPARE(meter.level(), 0.0F);
        meter.update(FakeAudio::block({4, -4}));
        QCOMPARE(meter.level(), 1.0F);
    }

    void theLevelIsLinearInDecibels_data()
    {
        QTest::addColumn<double>("db");
        QTest::addColumn<double>("level");
        QTest::newRow("-70") << -70.0 << 0.0;
        QTest::newRow("-60") << -60.0 << 0.0;
        QTest::newRow("-45") << -45.0 << 0.25;
        QTest::newRow("-20") << -20.0 << 2.0 / 3.0;
        QTest::newRow("-6") << -6.0 << 0.9;
    }
    void theLevelIsLinearInDecibels()
    {
        QFETCH(double, db);
        QFETCH(double, level);
        const auto amplitude = float(std::pow(10.0, db / 20.0));
        LevelMeter meter;
        meter.update(FakeAudio::block(std::vector<float>(4'096, amplitude)));
        QVERIFY2(std::abs(double(meter.level()) - level) < 1e-5, qPrintable(QString::number(meter.level())));
    }

    void theLevelHasNoMemory()
    {
        LevelMeter meter;
        meter.update(FakeAudio::block(std::vector<float>(100, 1.0F)));
        meter.update(FakeAudio::block(std::vector<float>(100, 0.1F)));
        QVERIFY(std::abs(meter.level() - 2.0F / 3.0F) < 1e-5F);
    }

    void aBufferWithoutFramesOrFloatsLeavesTheLevel()
    {
        LevelMeter meter;
        meter.update(FakeAudio::block({1, -1}));
        PcmBuffer empty({48'000, 1}, 16);
        empty.setFrameLength(0);
        meter.update(empty);
        QCOMPARE(meter.level(), 1.0F);
        meter.update(PcmBuffer::withoutFloats({48'000, 1}, 16));
        QCOMPARE(meter.level(), 1.0F);
    }

    void onlyTheFirstChannelIsMetered()
    {
        PcmBuffer stereo({48'000, 2}, 64);
        std::fill_n(stereo.floatChannelData()[1], 64, 1.0F);
        LevelMeter meter;
        meter.update(stereo);
        QCOMPARE(meter.level(), 0.0F);
        std::fill_n(stereo.floatChannelData()[0], 64, 1.0F);
        std::fill_n(stereo.floatChannelData()[1], 64, 0.0F);
        meter.update(stereo);
        QCOMPARE(meter.level(), 1.0F);
    }

    void onlyValidFramesAreMetered()
    {
        PcmBuffer buffer({48'000, 1}, 64);
        std::fill_n(buffer.floatChannelData()[0], 32, 1.0F);
        buffer.setFrameLength(32);
        LevelMeter meter;
        meter.update(buffer);
        QCOMPARE(meter.level(), 1.0F);
    }

    void withoutAFileNothingIsWrittenOrLogged()
    {
        const test::LogCapture log;
        AudioFileWriter writer;
        QVERIFY(!writer.write(FakeAudio::block({1, 2})));
        const auto state = std::make_shared<test::FakeFileState>();
        const auto journal = std::make_shared<test::Journal>();
        writer.setFile(std::make_unique<test::FakeAudioFile>(state, journal));
        writer.close();
        QVERIFY(!writer.write(FakeAudio::block({1, 2})));
        QVERIFY(state->samples.empty());
        QCOMPARE(log.texts(channel), QStringList());
    }

    void theCountStartsWithTheFileAndOutlivesIt()
    {
        AudioFileWriter writer;
        const auto state = std::make_shared<test::FakeFileState>();
        const auto journal = std::make_shared<test::Journal>();
        writer.setFile(std::make_unique<test::FakeAudioFile>(state, journal));
        QCOMPARE(writer.totalFrames(), 0);
        QVERIFY(writer.write(FakeAudio::block({1, 2, 3})));
        QVERIFY(writer.write(FakeAudio::block({4})));
        QCOMPARE(writer.totalFrames(), 4);
        QCOMPARE(state->samples, (std::vector<float>{1, 2, 3, 4}));
        QCOMPARE(journal->calls(), QStringList());
        writer.close();
        QCOMPARE(journal->calls(), QStringList{QStringLiteral("file.finish")});
        QCOMPARE(writer.totalFrames(), 4);
        writer.setFile(std::make_unique<test::FakeAudioFile>(state, journal));
        QCOMPARE(writer.totalFrames(), 0);
        writer.setFile(nullptr);
        QCOMPARE(journal->count(QStringLiteral("file.finish")), 2);
    }

    void aFailedWriteIsLoggedAndTheNextOneTriesAgain()
    {
        const test::LogCapture log;
        AudioFileWriter writer;
        const auto state = std::make_shared<test::FakeFileState>();
        const auto journal = std::make_shared<test::Journal>();
        writer.setFile(std::make_unique<test::FakeAudioFile>(state, journal));
        QVERIFY(writer.write(FakeAudio::block({1})));
        state->writeError = test::platformFailure(QStringLiteral("Kein Platz – voll"));
        QVERIFY(!writer.write(FakeAudio::block({2, 3})));
        QCOMPARE(writer.totalFrames(), 1);
        QVERIFY(log.contains(channel, QStringLiteral("error"),
                             QStringLiteral("Write failed: Kein Platz – voll")));
        state->writeError = nullptr;
        QVERIFY(writer.write(FakeAudio::block({4, 5})));
        QCOMPARE(writer.totalFrames(), 3);
        QCOMPARE(log.texts(channel).size(), 1);
    }

    void closingWaitsForAWriteThatIsUnderWay()
    {
        std::atomic<bool> writing = false;
        std::atomic<bool> letGo = false;
        std::atomic<int> order = 0;
        AudioFileWriter writer;
        writer.setFile(std::make_unique<SlowFile>(writing, letGo, order));
        std::thread tap([&writer] { writer.write(FakeAudio::block({1})); });
        while (!writing)
            std::this_thread::yield();
        std::thread closer([&writer] { writer.close(); });
        letGo = true;
        closer.join();
        tap.join();
        QCOMPARE(SlowFile::m_destroyedAt.load(), 2); // the write was the first
    }

    void finishingAFileDoesNotHoldTheLock()
    {
        AudioFileWriter writer;
        bool wrote = true;
        writer.setFile(std::make_unique<CuriousFile>(writer, wrote));
        writer.close(); // would hang if the lock were held
        QVERIFY(!wrote);
        wrote = false;
        writer.setFile(std::make_unique<CuriousFile>(writer, wrote));
        writer.setFile(std::make_unique<test::FakeAudioFile>(std::make_shared<test::FakeFileState>(),
                                                             std::make_shared<test::Journal>()));
        QVERIFY(wrote);
    }
};

QTEST_GUILESS_MAIN(AudioPrimitivesTest)
#include "AudioPrimitivesTest.moc"
