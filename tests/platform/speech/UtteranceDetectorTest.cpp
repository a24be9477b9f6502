#include "platform/linux/speech/worker/UtteranceDetector.h"

#include "platform/linux/speech/worker/UtteranceDecoder.h"
#include "speech_support/SpokenAudio.h"

#include <QTest>

#include <cmath>

using namespace talvenor;

namespace {

// The sound in blocks of the given size, as it comes from a decoder.
QList<Utterance> detect(const test::Samples &samples, std::size_t blockSize = 1024)
{
    UtteranceDetector detector;
    QList<Utterance> utterances;
    const auto take = [&] {
        while (auto utterance = detector.next())
            utterances.append(std::move(*utterance));
    };
    for (std::size_t position = 0; position < samples.size(); position += blockSize) {
        detector.add(std::span(samples).subspan(position, std::min(blockSize, samples.size() - position)));
        take();
    }
    detector.finish();
    take();
    return utterances;
}

double start(const Utterance &utterance)
{
    return double(utterance.startSample) / test::kSampleRate;
}

double end(const Utterance &utterance)
{
    return start(utterance) + double(utterance.samples.size()) / test::kSampleRate;
}

void append(test::Samples &samples, const test::Samples &more)
{
    samples.insert(samples.end(), more.begin(), more.end());
}

} // namespace

/// Where speech begins and ends.
class UtteranceDetectorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingGivesNothing()
    {
        QVERIFY(detect({}).isEmpty());
        QVERIFY(detect(test::silence(0.005)).isEmpty());
        QVERIFY(detect(test::silence(30)).isEmpty());
    }

    void steadySoundIsBackground()
    {
        QVERIFY(detect(test::noise(30, -50)).isEmpty());
        QVERIFY(detect(test::noise(30, -20)).isEmpty());
        QVERIFY(detect(test::tone(30, 100, -20)).isEmpty());
    }

    void aClickIsNotSpeech()
    {
        test::Samples samples = test::silence(5);
        append(samples, test::noise(0.03, -10));
        append(samples, test::silence(5));
        QVERIFY(detect(samples).isEmpty());
    }

    void anUtteranceHasALittleOfTheQuietAroundIt()
    {
        test::Samples samples = test::silence(8);
        append(samples, test::noise(2, -20));
        append(samples, test::silence(8));
        const QList<Utterance> utterances = detect(samples);
        QCOMPARE(utterances.size(), 1);
        QVERIFY(start(utterances[0]) > 7.6 && start(utterances[0]) < 7.9);
        QVERIFY(end(utterances[0]) > 10.1 && end(utterances[0]) < 10.4);
    }

    void pausesDivideAndGapsDoNot()
    {
        test::Samples samples = test::silence(2);
        for (const double gap : {0.3, 0.7, 0.3, 2.0}) {
            append(samples, test::noise(1, -20));
            append(samples, test::silence(gap));
        }
        QCOMPARE(detect(samples).size(), 2);
    }

    void samplesComeAsTheyWere()
    {
        test::Samples samples = test::silence(12);
        append(samples, test::noise(2, -20));
        append(samples, test::silence(15));
        append(samples, test::noise(3, -25));
        append(samples, test::silence(4));
        const QList<Utterance> utterances = detect(samples);
        QCOMPARE(utterances.size(), 2);
        for (const Utterance &utterance : utterances) {
            const auto first = samples.begin() + utterance.startSample;
            QVERIFY(std::equal(utterance.samples.begin(), utterance.samples.end(), first));
        }
    }

    void theSizeOfBlocksDoesNotMatter()
    {
        test::Samples samples = test::silence(3);
        append(samples, test::speak(QStringLiteral("slt"), QStringLiteral("This is the first sentence.")));
        append(samples, test::silence(1));
        append(samples, test::speak(QStringLiteral("rms"), QStringLiteral("And this is the second one.")));
        const QList<Utterance> expected = detect(samples, samples.size());
        QCOMPARE(expected.size(), 2);
        for (const std::size_t blockSize : {1U, 159U, 160U, 100'000U}) {
            const QList<Utterance> utterances = detect(samples, blockSize);
            QCOMPARE(utterances.size(), expected.size());
            for (qsizetype index = 0; index < expected.size(); ++index) {
                QCOMPARE(utterances[index].startSample, expected[index].startSample);
                QVERIFY(utterances[index].samples == expected[index].samples);
            }
        }
    }

    void speechInNoiseIsFound()
    {
        test::Samples samples = test::noise(16, -45);
        const test::Samples speech =
            test::speak(QStringLiteral("slt"), QStringLiteral("Can you hear me now?"));
        for (std::size_t index = 0; index < speech.size(); ++index)
            samples[8 * test::kSampleRate + index] =
                std::int16_t(samples[8 * test::kSampleRate + index] + speech[index] / 2);
        const QList<Utterance> utterances = detect(samples);
        QCOMPARE(utterances.size(), 1);
        QVERIFY(start(utterances[0]) > 7.6 && start(utterances[0]) < 8.4);
    }

    void quietSpeechIsFound()
    {
        test::Samples samples = test::silence(3);
        // Forty decibels below what the voice gives.
        for (const std::int16_t sample :
             test::speak(QStringLiteral("rms"), QStringLiteral("Somebody far away is talking.")))
            samples.push_back(std::int16_t(sample / 40));
        append(samples, test::silence(3));
        QCOMPARE(detect(samples).size(), 1);
    }

    void speechWithoutAPauseIsCutAtAQuietPlace()
    {
        test::Samples samples = test::silence(3);
        // Twelve seconds, then a dip, then more, all without a pause of half a second.
        append(samples, test::noise(15, -20));
        append(samples, test::silence(0.2));
        append(samples, test::noise(20, -20));
        append(samples, test::silence(3));
        // Noise of that length is background by itself, so the detector must see dips as speech has them.
        for (std::size_t position = 0; position + 16'000 < samples.size(); position += 16'000)
            std::fill_n(samples.begin() + std::ptrdiff_t(position), 2'400, std::int16_t(30));
        const QList<Utterance> utterances = detect(samples);
        QVERIFY2(utterances.size() >= 2, qPrintable(QString::number(utterances.size())));
        for (qsizetype index = 0; index < utterances.size(); ++index) {
            QVERIFY(utterances[index].samples.size() <= std::size_t(UtteranceDetector::kMaximumSamples));
            if (index == 0)
                continue;
            // Nothing is lost or doubled at a cut, and it lies in a dip.
            QCOMPARE(start(utterances[index]), end(utterances[index - 1]));
            const auto cut = std::size_t(utterances[index].startSample);
            for (std::size_t around = cut - 160; around < cut + 160; ++around)
                QVERIFY(std::abs(int(samples[around])) < 100);
        }
    }

    void symbolsOfTheDecoderBecomeWords_data()
    {
        QTest::addColumn<QString>("symbol");
        QTest::addColumn<QString>("word");
        const auto add = [](const char *symbol, const char *word) {
            QTest::newRow(symbol) << QString::fromUtf8(symbol) << QString::fromUtf8(word);
        };
        add("<s>", "");
        add("</s>", "");
        add("<sil>", "");
        add("[NOISE]", "");
        add("[SPEECH]", "");
        add("[COUGH]", "");
        add("++UH++", "");
        add("hello", "hello");
        add("the(2)", "the");
        add("the(12)", "the");
        add("don't(3)", "don't");
        add("f(x)", "f(x)");
        add("()", "()");
        add("(2)", "(2)");
        add("word()", "word()");
    }

    void symbolsOfTheDecoderBecomeWords()
    {
        QFETCH(QString, symbol);
        QFETCH(QString, word);
        QCOMPARE(QString::fromStdString(spokenWord(symbol.toStdString())), word);
    }
};

QTEST_GUILESS_MAIN(UtteranceDetectorTest)
#include "UtteranceDetectorTest.moc"
