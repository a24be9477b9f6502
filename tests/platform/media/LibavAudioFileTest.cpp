#include "foundation/LocalizedError.h"
#include "platform/Platform.h"
#include "platform/linux/media/FastStartRewriter.h"
#include "platform/linux/media/LinuxMedia.h"
#include "platform/linux/media/ReplacementFile.h"
#include "support/DecodedAudio.h"
#include "support/LogCapture.h"
#include "support/ToneAnalysis.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <limits>
#include <numbers>
#include <sys/resource.h>

using namespace talvenor;
using test::decodedAudio;
using test::probedAudio;
using test::toneLevelDbfs;

namespace {

const QString channel = QStringLiteral("com.talvenor.app.Platform");

/// A sine of a level, its phase going on from block to block.
class Tone
{
public:
    Tone(double rate, double frequency, double levelDbfs)
        : m_rate(rate), m_frequency(frequency), m_amplitude(std::pow(10.0, levelDbfs / 20.0))
    {
    }
    PcmBuffer next(std::uint32_t frames)
    {
        PcmBuffer buffer({m_rate, 1}, frames);
        for (std::uint32_t i = 0; i < frames; ++i, ++m_position) {
            buffer.floatChannelData()[0][i] = float(
                m_amplitude * std::sin(2 * std::numbers::pi * m_frequency * double(m_position) / m_rate));
        }
        return buffer;
    }
    /// Writes this many frames in blocks of 4096.
    void writeTo(AudioFile &file, std::int64_t frames)
    {
        while (frames > 0) {
            const auto count = std::uint32_t(std::min<std::int64_t>(frames, 4'096));
            file.write(next(count));
            frames -= count;
        }
    }

private:
    double m_rate;
    double m_frequency;
    double m_amplitude;
    std::int64_t m_position = 0;
};

std::unique_ptr<AudioFile> createFile(const QString &path, double rate = 48'000)
{
    return Platform::shared().createAudioFile(path, {.sampleRate = rate});
}

/// The middle of a signal, away from the edges of a tone.
std::span<const float> middle(const std::vector<float> &samples)
{
    return std::span(samples).subspan(samples.size() / 5, samples.size() * 3 / 5);
}

/// The names of the boxes at the top of an MPEG-4 file, in order.
QStringList boxes(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList names;
    while (file.pos() + 8 <= file.size()) {
        const qint64 start = file.pos();
        const QByteArray header = file.read(8);
        quint32 size = 0;
        for (int i = 0; i < 4; ++i)
            size = size << 8U | quint8(header[i]);
        names.append(QString::fromLatin1(header.mid(4)));
        if (size < 8 || !file.seek(start + size))
            return {};
    }
    return names;
}

double duration(const QString &path)
{
    return probedAudio(path)[u"format"].toObject()[u"duration"].toString().toDouble();
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

void putFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

struct stat statusOf(const QString &path)
{
    struct stat status
    {
    };
    static_cast<void>(::stat(QFile::encodeName(path).constData(), &status));
    return status;
}

/// The largest file that this process may write, put back at the end.
class FileSizeLimit
{
public:
    FileSizeLimit()
    {
        std::signal(SIGXFSZ, SIG_IGN); // the write shall fail, and not the process end
        ::getrlimit(RLIMIT_FSIZE, &m_before);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;
    void set(rlim_t bytes) const
    {
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    void lift() const { ::setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

} // namespace

/// Audio files by the real encoder, on real disks.
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

    void aKilledProcessLeavesAFileThatPlays()
    {
        QRandomGenerator random(QRandomGenerator::securelySeeded());
        for (int round = 0; round < 25; ++round) {
            const QString path = m_folder->filePath(QStringLiteral("%1.m4a").arg(round));
            QProcess writer;
            writer.start(QStringLiteral(TALVENOR_FILE_WRITER),
                         {path, QStringLiteral("20"), QStringLiteral("600")});
            QVERIFY(writer.waitForReadyRead());
            QTest::qSleep(int(random.bounded(400U)));
            QVERIFY(::kill(pid_t(writer.processId()), SIGKILL) == 0);
            QVERIFY(writer.waitForFinished());
            QCOMPARE(writer.exitStatus(), QProcess::CrashExit);
            const QByteArray lines = writer.readAllStandardOutput().trimmed();
            const double written = lines.mid(lines.lastIndexOf('\n') + 1).toDouble() / 1'000;
            const std::vector<float> samples = decodedAudio(path);
            const double readable = double(samples.size()) / 48'000;
            QVERIFY2(written - readable < 2 && readable > 0,
                     qPrintable(QStringLiteral("%1 s of %2 s").arg(readable).arg(written)));
            if (readable > 0.5)
                QVERIFY(std::abs(toneLevelDbfs(middle(samples), 48'000, 440) + 12.04) < 0.5);
        }
    }

    void anOrdinaryEndOfTheProcessWaitsForTheRewriting()
    {
        static_cast<void>(test::outputOf(QStringLiteral(TALVENOR_FILE_WRITER),
                                         {m_path, QStringLiteral("1000"), QStringLiteral("60")}));
        QVERIFY(!boxes(m_path).contains(QStringLiteral("moof")));
        QVERIFY(boxes(m_path).contains(QStringLiteral("moov")));
        QVERIFY(std::abs(duration(m_path) - 60) < 0.1);
    }

    void aFullDiskIsAnErrorUntilThereIsRoomAgain()
    {
        const FileSizeLimit limit;
        auto file = createFile(m_path);
        Tone tone(48'000, 1'000, -20);
        limit.set(60'000); // about five seconds
        int failures = 0;
        int error = 0;
        QString text;
        for (int block = 0; block < 100; ++block) { // ten seconds
            try {
                file->write(tone.next(4'800));
                QCOMPARE(failures, 0); // once it is full, every attempt fails
            } catch (const PlatformError &failure) {
                ++failures;
                error = failure.code();
                text = failure.errorDescription();
            }
        }
        QVERIFY(failures > 20);
        QCOMPARE(error, EFBIG);
        QVERIFY2(text.startsWith(QStringLiteral("The recording could not be written to the disk: ")),
                 qPrintable(text));
        QVERIFY(!boxes(m_path).isEmpty()); // no torn fragment at the end
        const double readable = double(decodedAudio(m_path).size()) / 48'000;
        QVERIFY2(readable > 3 && readable < 6, qPrintable(QString::number(readable)));
        limit.lift();
        tone.writeTo(*file, 48'000LL * 2);
        file.reset();
        waitForFastStartRewrites();
        // All of it is there, without a gap.
        const std::vector<float> samples = decodedAudio(m_path);
        QVERIFY(std::abs(double(samples.size()) / 48'000 - 12) < 0.03);
        QVERIFY(std::abs(toneLevelDbfs(middle(samples), 48'000, 1'000) + 20) < 0.5);
    }

    void aDiskThatStaysFullKeepsWhatFits()
    {
        const test::LogCapture log;
        const FileSizeLimit limit;
        auto file = createFile(m_path);
        Tone tone(48'000, 1'000, -20);
        limit.set(40'000);
        for (int block = 0; block < 100; ++block) {
            try {
                file->write(tone.next(4'800));
            } catch (const PlatformError &) {
                // expected, and looked at above
            }
        }
        file.reset();
        waitForFastStartRewrites();
        QVERIFY(log.texts(channel).join(u'\n').contains(QStringLiteral("The end of ") + m_path));
        const double readable = double(decodedAudio(m_path).size()) / 48'000;
        QVERIFY2(readable > 2 && readable < 5, qPrintable(QString::number(readable)));
    }

    void noRoomForTheRewritingLeavesTheFragments()
    {
        const test::LogCapture log;
        const FileSizeLimit limit;
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000LL * 5);
        limit.set(1'000); // nothing can be written any more
        file.reset();
        waitForFastStartRewrites();
        limit.lift();
        QVERIFY(log.texts(channel).join(u'\n').contains(m_path + QStringLiteral(" stays in fragments. ")));
        QVERIFY(boxes(m_path).contains(QStringLiteral("moof")));
        QVERIFY(std::abs(double(decodedAudio(m_path).size()) / 48'000 - 5) < 1.2);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("a.m4a")});
    }

    void aPlaceThatCannotBeWrittenIsAnError_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("number");
        QTest::newRow("no such folder") << QStringLiteral("missing/a.m4a") << ENOENT;
        QTest::newRow("a file for a folder") << QStringLiteral("plain/a.m4a") << ENOTDIR;
        QTest::newRow("a folder for a file") << QStringLiteral("folder") << EISDIR;
        QTest::newRow("not writable") << QStringLiteral("/sys/kernel/a.m4a") << EACCES;
        QTest::newRow("nothing") << QString() << ENOENT;
        QTest::newRow("too long") << QString(300, u'x') << ENAMETOOLONG;
    }
    void aPlaceThatCannotBeWrittenIsAnError()
    {
        QFETCH(QString, path);
        QFETCH(int, number);
        putFile(m_folder->filePath(QStringLiteral("plain")), "x");
        QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
        const QString whole = path.isEmpty() || path.startsWith(u'/') ? path : m_folder->filePath(path);
        try {
            createFile(whole);
            QFAIL("no error");
        } catch (const PlatformError &error) {
            QCOMPARE(error.domain(), QStringLiteral("posix"));
            QVERIFY2(error.code() == number ||
                         (number == EACCES && (error.code() == EPERM || error.code() == EROFS)),
                     qPrintable(error.errorDescription()));
            QVERIFY(error.errorDescription().startsWith(QStringLiteral("The file \"") + whole +
                                                        QStringLiteral("\" could not be created: ")));
        }
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("plain")});
    }

    void aNewFileTakesThePlaceOfAnOldOne()
    {
        putFile(m_path, "old");
        QFile reader(m_path);
        QVERIFY(reader.open(QIODevice::ReadOnly));
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000);
        QCOMPARE(reader.readAll(), QByteArray("old")); // whoever reads it keeps it
        file.reset();
        waitForFastStartRewrites();
        QVERIFY(std::abs(duration(m_path) - 1) < 0.03);
    }

    void settingsThatCannotBeMetReplaceNothing_data()
    {
        QTest::addColumn<uint>("formatID");
        QTest::addColumn<double>("rate");
        QTest::addColumn<uint>("channels");
        QTest::newRow("another format") << 0x6c70636dU << 48'000.0 << 1U;
        QTest::newRow("stereo") << kAudioFormatMPEG4AAC << 48'000.0 << 2U;
        QTest::newRow("no channel") << kAudioFormatMPEG4AAC << 48'000.0 << 0U;
        QTest::newRow("no rate") << kAudioFormatMPEG4AAC << 0.0 << 1U;
        QTest::newRow("negative") << kAudioFormatMPEG4AAC << -48'000.0 << 1U;
        QTest::newRow("no number") << kAudioFormatMPEG4AAC << std::nan("") << 1U;
        QTest::newRow("infinite") << kAudioFormatMPEG4AAC << std::numeric_limits<double>::infinity() << 1U;
    }
    void settingsThatCannotBeMetReplaceNothing()
    {
        QFETCH(uint, formatID);
        QFETCH(double, rate);
        QFETCH(uint, channels);
        putFile(m_path, "old");
        QVERIFY_EXCEPTION_THROWN(
            static_cast<void>(Platform::shared().createAudioFile(
                m_path, {.formatID = formatID, .sampleRate = rate, .channelCount = channels})),
            PlatformError);
        QCOMPARE(contentOf(m_path), QByteArray("old"));
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
        QVERIFY(test::rmsDbfs(std::span(samples).subspan(52'000, 40'000)) < -80);
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
        QVERIFY(test::rmsDbfs(decodedAudio(m_path)) < -100);
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
        QVERIFY(test::rmsDbfs(std::span(samples).first(500)) > -12);
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

    void aFileThatWasDeletedDoesNotComeBack()
    {
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000LL * 3);
        QVERIFY(QFile::remove(m_path));
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000); // writing goes on regardless
        file.reset();
        waitForFastStartRewrites();
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void aFileThatWasReplacedOrMovedIsLeftAlone()
    {
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000LL * 3);
        const QString moved = m_folder->filePath(QStringLiteral("moved.m4a"));
        QVERIFY(QFile::rename(m_path, moved));
        putFile(m_path, "another");
        file.reset();
        waitForFastStartRewrites();
        QCOMPARE(contentOf(m_path), QByteArray("another"));
        QVERIFY(std::abs(duration(moved) - 3) < 0.03); // still in fragments, and whole
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name),
                 (QStringList{QStringLiteral("a.m4a"), QStringLiteral("moved.m4a")}));
    }

    void aReplacementLooksAtWhatItReplaces()
    {
        putFile(m_path, "first");
        const struct stat first = statusOf(m_path);
        {
            ReplacementFile file(m_path);
            QCOMPARE(::write(file.fd(), "second", 6), 6);
            QVERIFY(file.replaceIfStill(first));
        }
        QCOMPARE(contentOf(m_path), QByteArray("second"));
        const struct stat second = statusOf(m_path);
        {
            ReplacementFile file(m_path);
            QVERIFY(!file.replaceIfStill(first)); // another one is there by now
        }
        QCOMPARE(contentOf(m_path), QByteArray("second"));
        QVERIFY(QFile::remove(m_path));
        {
            ReplacementFile file(m_path);
            QVERIFY(!file.replaceIfStill(second)); // nothing is there any more
        }
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void whatIsNoRecordingStaysAsItIs()
    {
        const test::LogCapture log;
        putFile(m_path, QByteArray(5'000, 'x'));
        rewriteForFastStart(FileDescriptor(::open(QFile::encodeName(m_path).constData(), O_RDONLY)), m_path);
        waitForFastStartRewrites();
        QCOMPARE(contentOf(m_path), QByteArray(5'000, 'x'));
        QCOMPARE(log.texts(channel).size(), 1);
        QVERIFY(log.texts(channel).first().startsWith(m_path + QStringLiteral(" stays in fragments. ")));
    }

    void thePermissionsOfTheFileStay()
    {
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000);
        QVERIFY(QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner));
        file.reset();
        waitForFastStartRewrites();
        QCOMPARE(statusOf(m_path).st_mode & 0777U, 0600U);
        QVERIFY(!boxes(m_path).contains(QStringLiteral("moof")));
    }

private:
    std::optional<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(LibavAudioFileTest)
#include "LibavAudioFileTest.moc"
