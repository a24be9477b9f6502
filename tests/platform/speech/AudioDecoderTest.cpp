#include "platform/linux/media/AudioDecoder.h"

#include "foundation/LocalizedError.h"
#include "speech_support/SpokenAudio.h"
#include "support/FailingReads.h"

extern "C" {
#include <libavutil/log.h>
}

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <random>

#include <sys/stat.h>

using namespace talvenor;

namespace {

struct Decoded
{
    test::Samples samples;
    std::size_t longestBlock = 0;
};

Decoded decode(const QString &path)
{
    AudioDecoder decoder(path);
    Decoded decoded;
    test::Samples block;
    while (decoder.read(block)) {
        decoded.longestBlock = std::max(decoded.longestBlock, block.size());
        decoded.samples.insert(decoded.samples.end(), block.begin(), block.end());
    }
    return decoded;
}

double seconds(const test::Samples &samples)
{
    return double(samples.size()) / AudioDecoder::kSampleRate;
}

/// Effective level in decibels of full scale between two moments.
double level(const test::Samples &samples, double from, double to)
{
    double squares = 0;
    const auto first = std::size_t(from * AudioDecoder::kSampleRate);
    const auto last = std::size_t(to * AudioDecoder::kSampleRate);
    for (std::size_t index = first; index < last; ++index)
        squares += std::pow(samples.at(index) / 32768.0, 2);
    return 10 * std::log10(squares / double(last - first) + 1e-12);
}

// A click in silence, by which times can be measured.
test::Samples clickAt(double second, double length)
{
    test::Samples samples = test::silence(length);
    for (std::size_t index = 0; index < 16; ++index)
        samples[std::size_t(second * test::kSampleRate) + index] = 24000;
    return samples;
}

} // namespace

/// The way from any audio file to what recognisers take.
class AudioDecoderTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    [[nodiscard]] QString path(const char *name) const { return m_folder.filePath(QString::fromUtf8(name)); }

    QString writeBytes(const char *name, const QByteArray &bytes)
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("a test file cannot be written");
        return file.fileName();
    }

    QByteArray readBytes(const QString &name)
    {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("a test file cannot be read");
        return file.readAll();
    }

    // The text of the failure that must come.
    QString failureOf(const QString &name)
    {
        try {
            static_cast<void>(decode(name));
        } catch (const PlatformError &error) {
            return error.errorDescription();
        }
        return QStringLiteral("nothing was thrown");
    }

private Q_SLOTS:
    void initTestCase() { av_log_set_level(AV_LOG_QUIET); }

    void aWaveFileComesAsItIs()
    {
        const test::Samples samples = test::noise(3, -20);
        test::writeWave(path("plain.wav"), samples);
        QVERIFY(decode(path("plain.wav")).samples == samples);
    }

    void anM4aKeepsLengthLevelAndTimes()
    {
        test::Samples samples = clickAt(1.5, 2);
        const test::Samples sound = test::tone(2, 440, -20);
        samples.insert(samples.end(), sound.begin(), sound.end());
        test::writeM4a(path("plain.m4a"), samples);
        const Decoded decoded = decode(path("plain.m4a"));
        QVERIFY2(std::abs(seconds(decoded.samples) - 4) < 0.05,
                 qPrintable(QString::number(seconds(decoded.samples))));
        QVERIFY(std::abs(level(decoded.samples, 2.5, 3.5) + 20) < 0.5);
        // The encoder's lead-in is left out, so times are those of the sound that was recorded.
        QVERIFY(std::abs(test::onset(decoded.samples) - 1.5) < 0.005);
    }

    void channelsAreMixedToOne()
    {
        const QStringList toLeft{QStringLiteral("-af"), QStringLiteral("pan=stereo|c0=c0")};
        const QStringList toBoth{QStringLiteral("-af"), QStringLiteral("pan=stereo|c0=c0|c1=c0")};
        test::writeM4a(path("left.m4a"), test::tone(1, 440, -20), toLeft);
        test::writeM4a(path("both.m4a"), test::tone(1, 440, -20), toBoth);
        const Decoded left = decode(path("left.m4a"));
        const Decoded both = decode(path("both.m4a"));
        QVERIFY(std::abs(double(both.samples.size()) / AudioDecoder::kSampleRate - 1) < 0.05);
        QVERIFY(std::abs(level(both.samples, 0.2, 0.8) + 20) < 0.5);
        QVERIFY(std::abs(level(left.samples, 0.2, 0.8) + 26) < 0.5);
    }

    void aLongFileComesInSmallBlocks()
    {
        test::writeM4a(path("long.m4a"), test::tone(120, 300, -30));
        const Decoded decoded = decode(path("long.m4a"));
        QVERIFY(std::abs(seconds(decoded.samples) - 120) < 0.05);
        QVERIFY(decoded.longestBlock <= std::size_t(AudioDecoder::kSampleRate));
    }

    void otherFormatsAreReadToo_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"sound.mp3", "sound.flac", "sound.ogg", "sound.mka", "sound.aiff"})
            QTest::newRow(name) << QString::fromUtf8(name);
    }

    void otherFormatsAreReadToo()
    {
        QFETCH(QString, name);
        const QString file = m_folder.filePath(name);
        QStringList codec;
        if (name.endsWith(QStringLiteral("mp3")))
            codec = {QStringLiteral("-c:a"), QStringLiteral("libmp3lame")};
        else if (name.endsWith(QStringLiteral("flac")) || name.endsWith(QStringLiteral("ogg")))
            codec = {QStringLiteral("-c:a"), QStringLiteral("flac")};
        else if (name.endsWith(QStringLiteral("aiff")))
            codec = {QStringLiteral("-c:a"), QStringLiteral("pcm_s16be")};
        test::writeM4a(file, test::tone(2, 440, -20), codec);
        const Decoded decoded = decode(file);
        QVERIFY(std::abs(seconds(decoded.samples) - 2) < 0.06);
        QVERIFY(std::abs(level(decoded.samples, 0.5, 1.5) + 20) < 0.5);
    }

    void aRecordingThatWasCutOffIsReadUpToTheCut()
    {
        // As a recording stands on the disk while it runs: fragments of one second.
        test::writeM4a(path("whole.m4a"), test::tone(20, 440, -20),
                       {QStringLiteral("-movflags"), QStringLiteral("delay_moov+default_base_moof"),
                        QStringLiteral("-frag_duration"), QStringLiteral("1000000")});
        const QByteArray bytes = readBytes(path("whole.m4a"));
        QList<qsizetype> cuts;
        std::mt19937 generator(7);
        for (int round = 0; round < 20; ++round)
            cuts.append(qsizetype(double(bytes.size()) *
                                  std::uniform_real_distribution<double>(0.3, 0.95)(generator)));
        // Each kind of place around the head of a fragment.
        const qsizetype fragment = bytes.indexOf("moof", bytes.size() / 2) - 4;
        for (const int offset : {-50, -1, 0, 1, 4, 7, 8, 20, 100, 200, 287, 288, 290, 300, 400})
            cuts.append(fragment + offset);
        for (const qsizetype cut : cuts) {
            const double length = seconds(decode(writeBytes("cut.m4a", bytes.left(cut))).samples);
            const double expected = 20 * double(cut) / double(bytes.size());
            QVERIFY2(length > expected - 1.5 && length < expected + 0.5,
                     qPrintable(QStringLiteral("%1 s of %2, cut at %3").arg(length).arg(expected).arg(cut)));
        }
    }

    void damagedStretchesAreLeftOut()
    {
        test::writeM4a(path("good.m4a"), test::tone(20, 440, -20));
        QByteArray bytes = readBytes(path("good.m4a"));
        const qsizetype middle = bytes.size() / 2;
        bytes.replace(middle, 2000, QByteArray(2000, '\xff'));
        const double length = seconds(decode(writeBytes("damaged.m4a", bytes)).samples);
        QVERIFY2(length > 18, qPrintable(QString::number(length)));
    }

    void whatTheDiskDoesNotGiveIsNoEnd_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("name");
        QTest::newRow("ordinary") << QStringList{QStringLiteral("-movflags"), QStringLiteral("faststart")}
                                  << QStringLiteral("ordinary.m4a");
        QTest::newRow("fragments") << QStringList{QStringLiteral("-movflags"),
                                                  QStringLiteral("delay_moov+default_base_moof"),
                                                  QStringLiteral("-frag_duration"), QStringLiteral("1000000")}
                                   << QStringLiteral("fragments.m4a");
        QTest::newRow("samples") << QStringList{QStringLiteral("-c:a"), QStringLiteral("pcm_s16le")}
                                 << QStringLiteral("samples.wav");
    }

    void whatTheDiskDoesNotGiveIsNoEnd()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, name);
        const QString file = m_folder.filePath(name);
        test::writeM4a(file, test::tone(40, 440, -20), options);
        const test::FailingReads failing(file, off_t(QFile(file).size() * 7 / 10));
        AudioDecoder decoder(file);
        test::Samples block;
        std::size_t count = 0;
        QString text;
        try {
            while (decoder.read(block))
                count += block.size();
        } catch (const PlatformError &error) {
            text = error.errorDescription();
        }
        QCOMPARE(text, QStringLiteral("The audio file cannot be read to its end: Input/output error"));
        const double length = double(count) / AudioDecoder::kSampleRate;
        QVERIFY2(length > 25 && length < 29, qPrintable(QString::number(length)));
    }

    void whatIsNoAudioIsToldPlainly_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("text");
        const QString noAudio = QStringLiteral("The file contains no audio that can be read.");
        QTest::newRow("empty") << QByteArray() << QStringLiteral("The audio file is empty.");
        QTest::newRow("text") << QByteArray("This is not a recording.\n").repeated(200) << noAudio;
        QTest::newRow("zeros") << QByteArray(100'000, '\0') << noAudio;
        QTest::newRow("playlist of another file")
            << QByteArray("#EXTM3U\n#EXT-X-TARGETDURATION:5\n#EXTINF:5,\nplain.wav\n#EXT-X-ENDLIST\n")
            << noAudio;
        QTest::newRow("list of another file")
            << QByteArray("ffconcat version 1.0\nfile plain.wav\n") << noAudio;
        QTest::newRow("picture") << QByteArray::fromHex(
                                        "89504e470d0a1a0a0000000d4948445200000001000000010802000000907753de")
                                 << noAudio;
    }

    void whatIsNoAudioIsToldPlainly()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, text);
        test::writeWave(path("plain.wav"), test::tone(1, 440, -20));
        QCOMPARE(failureOf(writeBytes("other.m4a", content)), text);
    }

    void aFileCutToItsHeadHoldsNoAudio()
    {
        test::writeM4a(path("whole.m4a"), test::tone(5, 440, -20));
        const QByteArray bytes = readBytes(path("whole.m4a"));
        for (const qsizetype size : {1, 8, 32, 44, 200})
            QCOMPARE(failureOf(writeBytes("head.m4a", bytes.left(size))),
                     QStringLiteral("The file contains no audio that can be read."));
        test::writeWave(path("head.wav"), {});
        QCOMPARE(failureOf(path("head.wav")), QStringLiteral("The file contains no audio that can be read."));
    }

    void whatCannotBeOpenedIsToldPlainly()
    {
        QVERIFY(failureOf(path("missing.m4a"))
                    .startsWith(QStringLiteral("The audio file cannot be opened: No such file")));
        QCOMPARE(failureOf(m_folder.path()),
                 QStringLiteral("The audio file cannot be opened: It is not a regular file"));
        QCOMPARE(failureOf(QStringLiteral("/dev/zero")),
                 QStringLiteral("The audio file cannot be opened: It is not a regular file"));
        QVERIFY(failureOf(QStringLiteral("http://127.0.0.1:9/sound.wav"))
                    .startsWith(QStringLiteral("The audio file cannot be opened")));
    }

    void aPipeDoesNotHoldItUp()
    {
        const QString pipe = path("pipe.m4a");
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QCOMPARE(failureOf(pipe),
                 QStringLiteral("The audio file cannot be opened: It is not a regular file"));
    }

    void namesAreNotRead()
    {
        // A colon, a percent sign and a dash mean something to libav's own names.
        const QString odd = path("-http:%03d, größer.wav");
        test::writeWave(odd, test::tone(1, 440, -20));
        QCOMPARE(seconds(decode(odd).samples), 1.0);
    }

    void hostileBytesNeverCrash()
    {
        test::writeM4a(path("seed.m4a"), test::tone(3, 440, -20));
        const QByteArray seed = readBytes(path("seed.m4a"));
        std::mt19937 generator(11);
        for (int round = 0; round < 60; ++round) {
            QByteArray bytes = seed;
            for (int change = 0; change < 40; ++change) {
                // Half of the changes hit the head of the file, where the structure is.
                const qsizetype reach = change % 2 == 0 ? 1500 : bytes.size();
                const qsizetype place = std::uniform_int_distribution<qsizetype>(0, reach - 1)(generator);
                bytes[change % 4 < 2 ? bytes.size() - 1 - place : place] = char(generator());
            }
            const QString file = writeBytes("hostile.m4a", bytes);
            try {
                // Whatever comes out, it is not more than the file can hold.
                QVERIFY(seconds(decode(file).samples) < 3600);
            } catch (const PlatformError &error) {
                QVERIFY(!error.errorDescription().isEmpty());
            }
        }
    }
};

QTEST_GUILESS_MAIN(AudioDecoderTest)
#include "AudioDecoderTest.moc"
