#include "platform/linux/audio/BlockStretch.h"
#include "platform/linux/audio/ClockPacer.h"
#include "platform/linux/audio/PacedQueue.h"
#include "platform/linux/audio/PlayingInput.h"
#include "platform/linux/audio/RateConverter.h"
#include "platform/linux/audio/SampleFifo.h"
#include "platform/linux/audio/TapThread.h"
#include "support/ToneAnalysis.h"

#include <QTest>
#include <QThread>

#include <cmath>
#include <numbers>
#include <numeric>

using namespace talvenor;
using namespace talvenor::test;
using std::chrono::milliseconds;

namespace {

constexpr double kRate = 48000;
constexpr std::int64_t kBlock = 4096;

std::vector<float> sine(double frequency, std::size_t count, std::size_t offset = 0, double rate = kRate)
{
    std::vector<float> samples(count);
    for (std::size_t index = 0; index < count; ++index)
        samples[index] =
            float(0.1 * std::sin(2 * std::numbers::pi * frequency * double(index + offset) / rate));
    return samples;
}

/// A device whose clock is off by `ppm` millionths, on a simulated monotonic clock.
struct Device
{
    PaceClock::time_point start{std::chrono::hours(1)};
    PaceClock::time_point now = start;
    ClockPacer pacer{kRate, start};
    double ppm = 0;
    std::int64_t stretched = 0;

    /// One block later; `lateMs` is how late it arrives.
    ClockPacer::Adjustment deliver(int lateMs = 0)
    {
        now += std::chrono::nanoseconds(std::llround(double(kBlock) / kRate * 1e9 / (1 + ppm / 1e6)));
        const auto adjustment = pacer.blockArrived(kBlock, now + milliseconds(lateMs));
        stretched += std::abs(adjustment.stretch);
        return adjustment;
    }

    /// How many milliseconds the frames so far are behind the clock.
    [[nodiscard]] double behindMs() const
    {
        return std::chrono::duration<double, std::milli>(now - start).count() -
               double(pacer.frames()) / kRate * 1000;
    }
};

} // namespace

/// The arithmetic that keeps the two sides of a meeting together, on clocks of the test's own.
class AudioPacingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDeviceWithARightClockPassesUntouched()
    {
        Device device;
        std::int64_t blocks = 0;
        for (; device.now - device.start < std::chrono::hours(2); ++blocks) {
            const auto adjustment = device.deliver(blocks % 7 == 0 ? 30 : 5);
            if (blocks > 0) {
                QCOMPARE(adjustment.silenceBefore, 0);
                QCOMPARE(adjustment.dropped, 0);
            }
        }
        QCOMPARE(device.stretched, 0);
        QVERIFY(std::abs(device.behindMs()) < 35); // the first block was 30 ms late
    }

    void aDeviceWithAWrongClockStaysTogetherForHours_data()
    {
        QTest::addColumn<double>("ppm");
        QTest::newRow("slow") << -200.0;
        QTest::newRow("fast") << 200.0;
        QTest::newRow("very fast") << 700.0;
    }

    void aDeviceWithAWrongClockStaysTogetherForHours()
    {
        QFETCH(const double, ppm);
        Device device;
        device.ppm = ppm;
        double worst = 0;
        for (std::int64_t block = 0; device.now - device.start < std::chrono::hours(2); ++block) {
            const auto adjustment = device.deliver(block % 5 == 0 ? 25 : 0);
            if (block > 0) {
                // Never audibly: no holes, no jumps, at most a thousandth.
                QCOMPARE(adjustment.silenceBefore, 0);
                QCOMPARE(adjustment.dropped, 0);
                QVERIFY(std::abs(adjustment.stretch) <= 5);
            }
            worst = std::max(worst, std::abs(device.behindMs()));
        }
        QVERIFY2(worst < 60, qPrintable(QString::number(worst)));
    }

    void theFirstBlockIsSetToItsPlace()
    {
        Device device;
        device.now += milliseconds(400); // the device was slow to begin
        const auto adjustment = device.deliver();
        QCOMPARE(adjustment.silenceBefore, std::int64_t(0.4 * kRate));
        QVERIFY(std::abs(device.behindMs()) < 1);
    }

    void aDeviceThatIsGoneIsReplacedBySilence()
    {
        Device device;
        for (int block = 0; block < 20; ++block)
            device.deliver();
        for (int tick = 0; tick < 100; ++tick) {
            device.now += milliseconds(50);
            (void)device.pacer.silenceDue(false, device.now);
            QVERIFY(device.behindMs() < 90);
            QVERIFY(device.behindMs() > -1);
        }
        // The next device continues without a gap or an overlap worth the name.
        device.pacer.deviceAttached();
        device.deliver();
        QVERIFY(std::abs(device.behindMs()) < 5);
    }

    void aShortStallOfALiveDeviceLosesNothing()
    {
        Device device;
        for (int block = 0; block < 20; ++block)
            device.deliver();
        const auto stalledAt = device.now;
        QCOMPARE(device.pacer.silenceDue(true, stalledAt + milliseconds(1900)), 0);
        // All that was held back comes at once.
        for (int block = 0; block < 22; ++block) {
            const auto adjustment = device.pacer.blockArrived(kBlock, stalledAt + milliseconds(1900));
            QCOMPARE(adjustment.dropped, 0);
            QCOMPARE(adjustment.silenceBefore, 0);
        }
    }

    void whatComesAfterItsTimeWasFilledIsDropped()
    {
        Device device;
        for (int block = 0; block < 20; ++block)
            device.deliver();
        const std::int64_t before = device.pacer.frames();
        device.now += milliseconds(5000);
        const std::int64_t filled = device.pacer.silenceDue(true, device.now);
        QVERIFY(filled > std::int64_t(4.5 * kRate));
        for (int block = 0; block < 58; ++block) // five seconds of backlog in one burst
            (void)device.pacer.blockArrived(kBlock, device.now);
        QVERIFY(device.pacer.frames() - before < std::int64_t(5.2 * kRate));
        QVERIFY(device.behindMs() > -151);
    }

    void aHoleThatNobodyTellsOfIsFilled()
    {
        Device device;
        for (int block = 0; block < 20; ++block)
            device.deliver();
        device.now += milliseconds(1500); // these frames are lost
        for (int block = 0; block < 120; ++block)
            device.deliver();
        QVERIFY2(std::abs(device.behindMs()) < 60, qPrintable(QString::number(device.behindMs())));
    }

    void aSinkWithAWrongClockKeepsItsDelay_data()
    {
        QTest::addColumn<int>("millionths");
        QTest::newRow("slow") << -300;
        QTest::newRow("right") << 0;
        QTest::newRow("fast") << 300;
    }

    void aSinkWithAWrongClockKeepsItsDelay()
    {
        QFETCH(const int, millionths);
        PlayingInput input{int(kRate)};
        std::vector<float> block(960);
        std::size_t sent = 0;
        double owed = 0;
        std::size_t gaps = 0;
        constexpr int kTicks = 50 * 60 * 10; // ten minutes
        std::vector<float> lastSecond;
        const auto period = sine(500, 96);
        for (int tick = 0; tick < kTicks; ++tick) {
            owed += 960 * (1 + millionths / 1e6);
            std::vector<float> burst;
            while (owed >= 1) {
                burst.push_back(period[sent++ % period.size()]);
                owed -= 1;
            }
            input.push(burst);
            std::ranges::fill(block, 0.0F);
            input.mixInto(block);
            if (tick > 10 && rmsDbfs(block) < -30)
                ++gaps;
            if (tick >= kTicks - 50)
                lastSecond.insert(lastSecond.end(), block.begin(), block.end());
        }
        // A fast sink is never heard to stumble; a slow one at most while the reserve is found.
        QVERIFY2(gaps <= 2, qPrintable(QString::number(gaps)));
        // Its level by the root mean square: while it is stretched, its pitch is off by a thousandth.
        QVERIFY(std::abs(rmsDbfs(lastSecond) + 23.01) < 0.2);
        // What is still held back is the delay of this sound against the microphone.
        input.end();
        std::size_t held = 0;
        while (!input.isSpent()) {
            input.mixInto(block);
            held += block.size();
        }
        QVERIFY2(held < std::size_t(0.15 * kRate), qPrintable(QString::number(held)));
    }

    void aBurstyInputIsHeldBackUntilItFlows()
    {
        PlayingInput input{int(kRate)};
        std::vector<float> block(960);
        std::size_t sent = 0;
        int gapsAtTheEnd = 0;
        for (int tick = 0; tick < 1000; ++tick) {
            if (tick % 6 == 0) { // 120 ms at a time
                input.push(sine(500, 6 * 960, sent));
                sent += 6 * 960;
            }
            std::ranges::fill(block, 0.0F);
            input.mixInto(block);
            if (tick > 500 && rmsDbfs(block) < -30)
                ++gapsAtTheEnd;
        }
        QCOMPARE(gapsAtTheEnd, 0);
    }

    void aQueueThatRunsAwayIsTrimmed()
    {
        PlayingInput input{int(kRate)};
        input.push(std::vector<float>(std::size_t(3 * kRate), 0.1F)); // a server that had hung
        std::vector<float> block(960);
        for (int tick = 0; tick < 5; ++tick)
            input.mixInto(block);
        input.end();
        std::size_t held = 0;
        while (!input.isSpent()) {
            input.mixInto(block);
            held += block.size();
        }
        QVERIFY(held < std::size_t(0.6 * kRate));
    }

    void anEndedInputPlaysOut()
    {
        PlayingInput input{int(kRate)};
        input.push(std::vector<float>(100, 0.5F)); // less than is held back otherwise
        std::vector<float> block(960);
        input.mixInto(block);
        QCOMPARE(block[0], 0.0F);
        input.end();
        QVERIFY(!input.isSpent());
        input.mixInto(block);
        QCOMPARE(block[99], 0.5F);
        QCOMPARE(block[100], 0.0F);
        QVERIFY(input.isSpent());
    }

    void whatArrivesWhileTheTapIsSlowIsDeliveredWhole()
    {
        PacedQueue queue;
        TapThread tap(queue);
        std::vector<float> heard;
        int calls = 0;
        tap.install(1000, {kRate, 1}, [&](PcmBuffer &buffer) {
            if (++calls == 3)
                QThread::msleep(600); // a disk that takes its time
            const float *const samples = buffer.floatChannelData()[0];
            heard.insert(heard.end(), samples, samples + buffer.frameLength());
        });
        queue.begin(kRate);
        queue.setDeviceLive(true);
        tap.start();
        float next = 1;
        for (int blocks = 0; blocks < 12; ++blocks) {
            std::vector<float> block(kBlock);
            for (float &sample : block)
                sample = next++;
            queue.push(block);
            QThread::msleep(85);
        }
        tap.stop(); // with what is still queued
        const auto first = std::ranges::find(heard, 1.0F);
        QCOMPARE(std::ptrdiff_t(heard.end() - first), std::ptrdiff_t(12 * kBlock));
        float expected = 1;
        for (auto sample = first; sample != heard.end(); ++sample)
            QCOMPARE(*sample, expected++);
        QVERIFY(std::all_of(heard.begin(), first, [](float sample) { return sample == 0; }));
    }

    void aFifoKeepsOrderAcrossItsEnds()
    {
        SampleFifo fifo(10'000);
        float next = 0;
        float expected = 0;
        for (int round = 0; round < 500; ++round) {
            std::vector<float> block(std::size_t(1 + (round * 37) % 900));
            for (float &sample : block)
                sample = next++;
            QCOMPARE(fifo.push(block), std::size_t(0));
            std::vector<float> taken(std::size_t(1 + (round * 53) % 1000));
            const std::size_t count = fifo.pop(taken);
            for (std::size_t index = 0; index < count; ++index)
                QCOMPARE(taken[index], expected++);
            if (fifo.size() > 8000) {
                expected += float(fifo.size());
                fifo.drop(fifo.size());
            }
        }
    }

    void aFullFifoLosesItsOldest()
    {
        SampleFifo fifo(10);
        std::vector<float> samples(25);
        std::iota(samples.begin(), samples.end(), 0.0F);
        QCOMPARE(fifo.push(std::span(samples).first(8)), std::size_t(0));
        QCOMPARE(fifo.push(std::span(samples).subspan(8, 4)), std::size_t(2));
        QCOMPARE(fifo.pushSilence(1), std::size_t(1));
        std::vector<float> taken(20);
        QCOMPARE(fifo.pop(taken), std::size_t(10));
        QCOMPARE(taken[0], 3.0F);
        QCOMPARE(taken[8], 11.0F);
        QCOMPARE(taken[9], 0.0F);
        QCOMPARE(fifo.push(samples), std::size_t(15));
        QCOMPARE(fifo.pop(taken), std::size_t(10));
        QCOMPARE(taken[0], 15.0F);
        QCOMPARE(fifo.pop(taken), std::size_t(0));
    }

    void aStretchedBlockIsTheSameSound()
    {
        const auto input = sine(5000, 4096);
        for (const std::size_t length : {std::size_t(4092), std::size_t(4100)}) {
            std::vector<float> output(length);
            stretchBlock(input, output);
            QCOMPARE(output.front(), input.front());
            QVERIFY(std::abs(output.back() - input.back()) < 1e-4F);
            const double frequency = 5000.0 * 4095 / double(length - 1);
            const double level = toneLevelDbfs(output, kRate, frequency);
            QVERIFY2(std::abs(level + 20) < 0.1, qPrintable(QString::number(level)));
        }
    }

    void aConvertedRateIsTheSameSound()
    {
        RateConverter converter(192'000, 48'000);
        std::vector<float> output;
        for (std::size_t block = 0; block < 60; ++block) {
            const auto converted = converter.convert(sine(1000, 4096, block * 4096, 192'000));
            output.insert(output.end(), converted.begin(), converted.end());
        }
        QVERIFY(std::abs(double(output.size()) - 60 * 1024) < 100);
        const auto middle = std::span<const float>(output).subspan(1000, 48'000);
        QVERIFY(std::abs(toneLevelDbfs(middle, 48'000, 1000) + 20) < 0.1);
        QCOMPARE(tonePresence(middle, 48'000, 1000, -21), 1.0); // no seams
    }
};

QTEST_GUILESS_MAIN(AudioPacingTest)
#include "AudioPacingTest.moc"
