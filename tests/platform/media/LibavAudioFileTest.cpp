#include "RecordedFile.h"

#include <limits>

using namespace talvenor;
using namespace talvenor::test;

/// What is in audio files by the real encoder.
class LibavAudioFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { installLinuxMedia(Platform::shared()); }
    void init()
    {
        m_folder.emplace();
        m_path = m_folder->filePath(QStringLiteral("a.m4a"));
    }
    void cleanup()
    {
        waitForFastStartRewrites();
        m_folder.reset();
    }
    void aClosedFileIsAnOrdinaryOne()
    {
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -12).writeTo(*file, 254'400); // 5.3 s
        file.reset();
        waitForFastStartRewrites();

        const QStringList found = boxes(m_path);
        QVERIFY2(found.contains(QStringLiteral("moov")) && !found.contains(QStringLiteral("moof")) &&
                     found.indexOf(QStringLiteral("moov")) < found.indexOf(QStringLiteral("mdat")),
                 qPrintable(found.join(u' ')));
        const QJsonObject probe = probedAudio(m_path);
        QCOMPARE(probe[u"streams"].toArray().size(), 1);
        const QJsonObject stream = probe[u"streams"][0].toObject();
        QCOMPARE(stream[u"codec_name"].toString(), QStringLiteral("aac"));
        QCOMPARE(stream[u"profile"].toString(), QStringLiteral("LC"));
        QCOMPARE(stream[u"sample_rate"].toString(), QStringLiteral("48000"));
        QCOMPARE(stream[u"channels"].toInt(), 1);
        QCOMPARE(probe[u"format"][u"tags"][u"major_brand"].toString(), QStringLiteral("M4A "));
        QVERIFY(std::abs(duration(m_path) - 5.3) < 0.025);
        const std::vector<float> samples = decodedAudio(m_path);
        QVERIFY(std::abs(double(samples.size()) - 254'400) <= 1'024);
        QVERIFY(std::abs(toneLevelDbfs(middle(samples), 48'000, 1'000) + 12) < 0.5);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("a.m4a")});
    }

    void theBitRateFollowsTheSampleRate_data()
    {
        QTest::addColumn<double>("rate");
        QTest::addColumn<double>("expected");
        QTest::newRow("48000") << 48'000.0 << 96'000.0;
        QTest::newRow("44100") << 44'100.0 << 96'000.0;
        QTest::newRow("16000") << 16'000.0 << 96'000.0 * 16'000 / 44'100;
    }

    void theBitRateFollowsTheSampleRate()
    {
        QFETCH(double, rate);
        QFETCH(double, expected);
        auto file = createFile(m_path, rate);
        QRandomGenerator random(1);
        PcmBuffer noise({rate, 1}, std::uint32_t(rate));
        for (int second = 0; second < 6; ++second) {
            for (std::uint32_t i = 0; i < noise.frameLength(); ++i)
                noise.floatChannelData()[0][i] = float(random.generateDouble() - 0.5);
            file->write(noise);
        }
        file.reset();
        waitForFastStartRewrites();
        const double found = probedAudio(m_path)[u"streams"][0][u"bit_rate"].toString().toDouble();
        QVERIFY2(std::abs(found / expected - 1) < 0.1, qPrintable(QString::number(found)));
    }

    void tonesKeepTheirLevel_data()
    {
        QTest::addColumn<double>("rate");
        QTest::addColumn<int>("fileRate");
        QTest::addColumn<double>("frequency");
        QTest::addColumn<double>("level");
        for (const int rate : {8'000, 11'025, 16'000, 22'050, 32'000, 44'100, 48'000, 96'000}) {
            QTest::addRow("%d Hz", rate) << double(rate) << rate << 440.0 << -20.0;
            QTest::addRow("%d Hz, loud", rate) << double(rate) << rate << 1'500.0 << -1.0;
        }
        QTest::newRow("soft") << 48'000.0 << 48'000 << 1'000.0 << -50.0;
        QTest::newRow("high") << 48'000.0 << 48'000 << 10'000.0 << -20.0;
        QTest::newRow("low") << 48'000.0 << 48'000 << 100.0 << -20.0;
        // Rates that AAC does not know end at its next one.
        QTest::newRow("unknown rate") << 37'800.0 << 44'100 << 440.0 << -20.0;
        QTest::newRow("odd rate") << 22'222.0 << 24'000 << 440.0 << -20.0;
        QTest::newRow("broken rate") << 47'999.6 << 48'000 << 440.0 << -20.0;
        QTest::newRow("very low rate") << 4'000.0 << 7'350 << 440.0 << -20.0;
        QTest::newRow("very high rate") << 192'000.0 << 96'000 << 440.0 << -20.0;
    }

    void tonesKeepTheirLevel()
    {
        QFETCH(double, rate);
        QFETCH(int, fileRate);
        QFETCH(double, frequency);
        QFETCH(double, level);
        auto file = createFile(m_path, rate);
        Tone(rate, frequency, level).writeTo(*file, std::int64_t(rate * 2));
        file.reset();
        waitForFastStartRewrites();
        QCOMPARE(probedAudio(m_path)[u"streams"][0][u"sample_rate"].toString(), QString::number(fileRate));
        const std::vector<float> samples = decodedAudio(m_path);
        QVERIFY2(std::abs(double(samples.size()) / fileRate - 2) < 0.15 * 1'024 / 1'000,
                 qPrintable(QString::number(samples.size())));
        const double found = toneLevelDbfs(middle(samples), fileRate, frequency);
        QVERIFY2(std::abs(found - level) < 0.5, qPrintable(QString::number(found)));
    }

    void blocksOfAnyLengthMakeOneContinuousSound()
    {
        for (const bool oddRate : {false, true}) {
            const double rate = oddRate ? 45'000 : 48'000;
            auto file = createFile(m_path, rate);
            Tone tone(rate, 1'000, -20);
            QRandomGenerator random(7);
            std::int64_t total = 0;
            while (total < std::int64_t(rate * 6)) {
                const std::uint32_t frames = random.bounded(4) == 0   ? random.bounded(3U)
                                             : random.bounded(8) == 0 ? 60'000U + random.bounded(999U)
                                                                      : random.bounded(5'000U);
                file->write(tone.next(frames));
                total += frames;
            }
            file.reset();
            waitForFastStartRewrites();
            const std::vector<float> samples = decodedAudio(m_path);
            QVERIFY(std::abs(double(samples.size()) / 48'000 - double(total) / rate) < 0.03);
            // One second at a time: a lost or doubled block would turn the phase and spread the line.
            for (std::size_t second = 0; second < 6; ++second) {
                const auto part = std::span(samples).subspan(second * 48'000, 48'000);
                if (second > 0)
                    QVERIFY(std::abs(toneLevelDbfs(part, 48'000, 1'000) + 20) < 0.5);
            }
            const double whole =
                toneLevelDbfs(std::span(samples).subspan(4'800, 5UL * 48'000), 48'000, 1'000);
            QVERIFY2(std::abs(whole + 20) < 0.5, qPrintable(QString::number(whole)));
            qint64 expected = -1'024; // the encoder's delay, which players leave out
            const QJsonArray packets = probedAudio(m_path, true)[u"packets"].toArray();
            for (qsizetype i = 0; i + 1 < packets.size(); ++i) {
                QCOMPARE(packets[i][u"pts"].toInteger(), expected);
                expected += 1'024;
            }
        }
    }

    void soundKeepsItsPlaceInTime()
    {
        auto file = createFile(m_path);
        PcmBuffer buffer({48'000, 1}, 48'000 * 3);
        constexpr std::ptrdiff_t place = 50'000; // in a fragment that is whole by then
        for (std::ptrdiff_t i = 0; i < 200; ++i)
            buffer.floatChannelData()[0][place + i] = i % 2 == 0 ? 0.9F : -0.9F;
        file->write(buffer);
        const auto loudest = [](const std::vector<float> &samples) {
            const auto found = std::max_element(samples.begin(), samples.end(), [](float one, float other) {
                return std::abs(one) < std::abs(other);
            });
            return found - samples.begin();
        };
        // While it is being written, a few samples of the encoder's delay may be heard at the start.
        const std::vector<float> before = decodedAudio(m_path);
        QVERIFY2(std::abs(loudest(before) - place) < 1'400, qPrintable(QString::number(loudest(before))));
        file.reset();
        waitForFastStartRewrites();
        const std::vector<float> after = decodedAudio(m_path);
        QVERIFY2(std::abs(loudest(after) - place) < 250, qPrintable(QString::number(loudest(after))));
    }

    void aFileUnderWayPlaysUpToTheLastSecond()
    {
        auto file = createFile(m_path);
        Tone tone(48'000, 1'000, -20);
        for (int tenth = 1; tenth <= 45; ++tenth) {
            file->write(tone.next(4'800));
            const double written = tenth / 10.0;
            const double readable = double(decodedAudio(m_path).size()) / 48'000;
            QVERIFY2(written - readable < 1.2 && readable <= written + 0.025,
                     qPrintable(QStringLiteral("%1 s of %2 s").arg(readable).arg(written)));
        }
        QVERIFY(std::abs(duration(m_path) - 4.5) < 1.2);
    }

    void oneCanSeekInBothKindsOfFile()
    {
        auto file = createFile(m_path);
        Tone(48'000, 500, -20).writeTo(*file, 48'000LL * 10);
        Tone(48'000, 2'000, -20).writeTo(*file, 48'000LL * 10);
        for (const bool closed : {false, true}) {
            if (closed) {
                file.reset();
                waitForFastStartRewrites();
            }
            const std::vector<float> late = decodedAudio(m_path, 12);
            QVERIFY(std::abs(double(late.size()) / 48'000 - 8) < 1.2);
            QVERIFY(std::abs(toneLevelDbfs(middle(late), 48'000, 2'000) + 20) < 0.5);
            const std::vector<float> early = decodedAudio(m_path, 5);
            const auto first = std::span(early).first(48'000UL * 4);
            QVERIFY(std::abs(toneLevelDbfs(first, 48'000, 500) + 20) < 0.5);
            QVERIFY(toneLevelDbfs(first, 48'000, 2'000) < -70);
        }
    }

    void buffersOfAnotherKindAreRefusedAndDoNoHarm()
    {
        auto file = createFile(m_path);
        Tone tone(48'000, 1'000, -20);
        tone.writeTo(*file, 48'000);
        QVERIFY_EXCEPTION_THROWN(file->write(PcmBuffer::withoutFloats({48'000, 1}, 10)), PlatformError);
        QVERIFY_EXCEPTION_THROWN(file->write(PcmBuffer({48'000, 2}, 10)), PlatformError);
        QVERIFY_EXCEPTION_THROWN(file->write(PcmBuffer({44'100, 1}, 10)), PlatformError);
        tone.writeTo(*file, 48'000);
        file.reset();
        waitForFastStartRewrites();
        QVERIFY(std::abs(duration(m_path) - 2) < 0.03);
        QVERIFY(std::abs(toneLevelDbfs(middle(decodedAudio(m_path)), 48'000, 1'000) + 20) < 0.5);
    }

    void whatIsNoNumberBecomesSilence()
    {
        auto file = createFile(m_path);
        Tone tone(48'000, 1'000, -20);
        tone.writeTo(*file, 48'000);
        PcmBuffer strange({48'000, 1}, 48'000);
        for (std::uint32_t i = 0; i < strange.frameLength(); ++i) {
            strange.floatChannelData()[0][i] =
                i % 2 == 0 ? std::numeric_limits<float>::quiet_NaN() : std::numeric_limits<float>::infinity();
        }
        file->write(strange);
        tone.writeTo(*file, 48'000);
        file.reset();
        waitForFastStartRewrites();
        const std::vector<float> samples = decodedAudio(m_path);
        QVERIFY(std::abs(double(samples.size()) / 48'000 - 3) < 0.03);
        QVERIFY(rmsDbfs(std::span(samples).subspan(52'000, 40'000)) < -80);
        QVERIFY(std::abs(toneLevelDbfs(std::span(samples).subspan(100'000, 40'000), 48'000, 1'000) + 20) <
                0.5);
    }

    void aFileWithoutSoundPlaysAMomentOfSilence()
    {
        auto file = createFile(m_path);
        file->write(PcmBuffer({48'000, 1}, 0));
        QVERIFY(QFile::exists(m_path));
        file.reset();
        waitForFastStartRewrites();
        const QJsonObject probe = probedAudio(m_path);
        QCOMPARE(probe[u"streams"][0][u"codec_name"].toString(), QStringLiteral("aac"));
        QVERIFY(duration(m_path) < 0.03);
        QVERIFY(rmsDbfs(decodedAudio(m_path)) < -100);
    }

    void lessThanAFrameOfSoundIsKept()
    {
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -6).writeTo(*file, 500);
        file.reset();
        waitForFastStartRewrites();
        const std::vector<float> samples = decodedAudio(m_path);
        QVERIFY2(samples.size() >= 500 && samples.size() <= 2'048,
                 qPrintable(QString::number(samples.size())));
        QVERIFY(rmsDbfs(std::span(samples).first(500)) > -12);
    }

    void aNameMayHoldAnything()
    {
        const QString path = m_folder->filePath(QStringLiteral("Besprechung 100%d: ä ? # \"x\" 日本.m4a"));
        auto file = createFile(path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000);
        file.reset();
        waitForFastStartRewrites();
        QVERIFY(std::abs(duration(path) - 1) < 0.03);
        QVERIFY(!boxes(path).contains(QStringLiteral("moof")));
    }

private:
    std::optional<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(LibavAudioFileTest)
#include "LibavAudioFileTest.moc"
