#include "platform/linux/speech/WhisperRecognizer.h"

#include "RecognitionLog.h"
#include "platform/linux/speech/WhisperOutput.h"
#include "speech_support/SpokenAudio.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace talvenor;

namespace {

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("a test file cannot be written");
}

QStringList temporaryFolders()
{
    const QDir work(qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/talvenor/work"));
    return work.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

/// Recognition by whisper.cpp's program, for which a script stands in that speaks its interface.
class WhisperRecognizerTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    std::shared_ptr<RecognitionRuns> m_runs;
    QString m_audio;

    [[nodiscard]] QString path(const char *name) const
    {
        return m_folder.filePath(QString::fromLatin1(name));
    }

    [[nodiscard]] WhisperRecognizer makeRecognizer(const char *mode,
                                                   const QString &language = QStringLiteral("de"))
    {
        writeFile(path("mode"), mode);
        return {m_runs, {path("whisper-cli"), path("ggml-base.bin"), language}};
    }

    // Runs one recognition to its end, after which nothing of it may be left.
    void recognize(const char *mode, test::RecognitionLog &log, const QString &audio)
    {
        makeRecognizer(mode).recognitionTask(test::recognitionOf(audio), log.handler());
        QVERIFY(log.wait());
        QVERIFY(!log.brokeTheRules());
        QVERIFY(test::waitUntil([] { return temporaryFolders().isEmpty(); }));
    }

    [[nodiscard]] QJsonObject asked() const
    {
        QFile file(path("asked.json"));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("the program was not asked");
        return QJsonDocument::fromJson(file.readAll()).object();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QFile::copy(QFINDTESTDATA("whisper-stand-in.py"), path("whisper-cli")));
        QVERIFY(QFile::setPermissions(path("whisper-cli"),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        m_audio = path("meeting.m4a");
        test::writeM4a(m_audio, test::tone(3, 440, -20));
    }

    void init()
    {
        m_runs = std::make_shared<RecognitionRuns>();
        QByteArray head(8, '\0');
        qToLittleEndian(quint32(0x67676d6c), head.data());
        qToLittleEndian(qint32(51865), head.data() + 4);
        writeFile(path("ggml-base.bin"), head);
    }

    void wordsComeWithTheirTimes()
    {
        test::RecognitionLog log;
        recognize("good", log, m_audio);
        QCOMPARE(log.words(),
                 QStringList({QStringLiteral("Guten"), QStringLiteral("Morgen,"), QStringLiteral("schöne"),
                              QStringLiteral("Grüße."), QStringLiteral("Los")}));
        QCOMPARE(log.final()->segments[0].timestamp, 0.12);
        QCOMPARE(log.final()->segments[4].timestamp, 1.9);
    }

    void theProgramIsAskedAsItWantsToBe()
    {
        test::RecognitionLog log;
        recognize("good", log, m_audio);
        const QJsonObject question = asked();
        QStringList arguments;
        for (const QJsonValue &argument : question.value(QStringLiteral("arguments")).toArray())
            arguments.append(argument.toString());
        QCOMPARE(arguments.size(), 15);
        const QString wave = arguments[3];
        arguments[3] = QStringLiteral("IN");
        QVERIFY(arguments[7].toInt() >= 1 && arguments[7].toInt() <= 8);
        arguments[7] = QStringLiteral("N");
        QCOMPARE(QFileInfo(arguments[14]).path(), QFileInfo(wave).path());
        arguments[14] = QStringLiteral("OUT");
        QCOMPARE(
            arguments.join(u' '),
            QStringLiteral("-m %1 -f IN -l de -t N -oj -ml 1 -sow -pp -of OUT").arg(path("ggml-base.bin")));
    }

    void theLanguageIsHandedOn()
    {
        test::RecognitionLog log;
        makeRecognizer("good", QStringLiteral("en"))
            .recognitionTask(test::recognitionOf(m_audio), log.handler());
        QVERIFY(log.wait());
        const QJsonArray arguments = asked().value(QStringLiteral("arguments")).toArray();
        QCOMPARE(arguments[5].toString(), QStringLiteral("en"));
    }

    void theTemporaryAudioIsRightAndPrivate()
    {
        test::RecognitionLog log;
        recognize("good", log, m_audio);
        const QJsonObject question = asked();
        QCOMPARE(question.value(QStringLiteral("channels")).toInt(), 1);
        QCOMPARE(question.value(QStringLiteral("bytes")).toInt(), 2);
        QCOMPARE(question.value(QStringLiteral("rate")).toInt(), 16000);
        QVERIFY(std::abs(question.value(QStringLiteral("length")).toDouble() - 3) < 0.05);
        QCOMPARE(question.value(QStringLiteral("audioMode")).toInt(), 0600);
        QCOMPARE(question.value(QStringLiteral("folderMode")).toInt(), 0700);
    }

    void linesServeAsPartialResults()
    {
        test::RecognitionLog log;
        makeRecognizer("hangs").recognitionTask(test::recognitionOf(m_audio), log.handler());
        // The program has not ended, and what it has said is here.
        QVERIFY(test::waitUntil([&] { return !log.partials().isEmpty(); }));
        QCOMPARE(log.partials()[0].segments[0].substring, QStringLiteral("Guten"));
        QCOMPARE(log.partials()[0].segments[0].timestamp, 0.12);
        QVERIFY(!log.partials()[0].isFinal);
    }

    void withoutTheWishThereAreNoPartialResults()
    {
        SpeechRequest request = test::recognitionOf(m_audio);
        request.shouldReportPartialResults = false;
        test::RecognitionLog log;
        makeRecognizer("good").recognitionTask(request, log.handler());
        QVERIFY(log.wait());
        QVERIFY(log.partials().isEmpty());
        QCOMPARE(log.words().size(), 5);
    }

    void theRecognitionOutlivesTheRecognizer()
    {
        test::RecognitionLog log;
        {
            WhisperRecognizer recognizer = makeRecognizer("good");
            QVERIFY(recognizer.recognitionTask(test::recognitionOf(m_audio), log.handler()) ==
                    SpeechTaskState::starting);
        }
        QVERIFY(log.wait());
        QVERIFY(log.final().has_value());
    }

    void silenceIsTheNoSpeechError_data()
    {
        QTest::addColumn<QByteArray>("mode");
        for (const char *mode : {"silent", "silence in words", "nothing"})
            QTest::newRow(mode) << QByteArray(mode);
    }

    void silenceIsTheNoSpeechError()
    {
        QFETCH(QByteArray, mode);
        test::RecognitionLog log;
        recognize(mode.constData(), log, m_audio);
        QVERIFY(log.error().has_value());
        QCOMPARE(log.error()->code, 1110);
    }

    void failuresAreToldAndAreNotSilence_data()
    {
        QTest::addColumn<QByteArray>("mode");
        QTest::addColumn<QString>("text");
        const QString noResult = QStringLiteral("The recogniser has written no result.");
        QTest::newRow("no result") << QByteArray("no result") << noResult;
        QTest::newRow("torn result") << QByteArray("torn result") << noResult;
        QTest::newRow("other result") << QByteArray("other result") << noResult;
        QTest::newRow("exit 1") << QByteArray("exit 1")
                                << QStringLiteral("The recogniser ended unexpectedly (exit code 1).");
        QTest::newRow("crash") << QByteArray("crash")
                               << QStringLiteral("The recogniser ended unexpectedly (signal 11).");
    }

    void failuresAreToldAndAreNotSilence()
    {
        QFETCH(QByteArray, mode);
        QFETCH(QString, text);
        test::RecognitionLog log;
        recognize(mode.constData(), log, m_audio);
        QVERIFY(log.error().has_value());
        QCOMPARE(log.error()->localizedDescription, text);
        QCOMPARE(log.error()->code, int(engineFailed));
    }

    void aModelThatCannotBeLoadedIsTold()
    {
        writeFile(path("ggml-base.bin"), QByteArray(100, 'x'));
        test::RecognitionLog log;
        recognize("good", log, m_audio);
        QVERIFY(log.error().has_value());
        QCOMPARE(log.error()->code, int(modelNotLoaded));
        QCOMPARE(log.error()->localizedDescription, QStringLiteral("The speech model cannot be loaded."));
    }

    void audioThatCannotBeReadIsTold()
    {
        test::RecognitionLog missing;
        recognize("good", missing, path("missing.m4a"));
        QVERIFY(missing.error().has_value());
        QCOMPARE(missing.error()->code, int(audioNotReadable));
        QVERIFY(missing.error()->localizedDescription.startsWith(
            QStringLiteral("The audio file cannot be opened: ")));

        writeFile(path("text.m4a"), QByteArray("no sound ").repeated(500));
        test::RecognitionLog text;
        recognize("good", text, path("text.m4a"));
        QVERIFY(text.error().has_value());
        QCOMPARE(text.error()->localizedDescription,
                 QStringLiteral("The file contains no audio that can be read."));
    }

    void aProgramThatIsGoneIsTold()
    {
        WhisperRecognizer recognizer(m_runs, {path("gone"), path("ggml-base.bin"), QStringLiteral("de")});
        QVERIFY(!recognizer.isAvailable());
        test::RecognitionLog log;
        recognizer.recognitionTask(test::recognitionOf(m_audio), log.handler());
        QVERIFY(log.wait());
        QCOMPARE(log.error()->code, int(engineFailed));
        QVERIFY(test::waitUntil([] { return temporaryFolders().isEmpty(); }));
    }

    void invalidTextBecomesReplacementCharacters()
    {
        test::RecognitionLog log;
        recognize("invalid text", log, m_audio);
        QCOMPARE(log.words().value(2), QStringLiteral("sch\uFFFDne"));
        QCOMPARE(log.words().size(), 5);
    }

    void startsNeverFall()
    {
        test::RecognitionLog log;
        recognize("falling starts", log, m_audio);
        QList<double> starts;
        const QList<SpeechSegment> segments = log.final()->segments;
        for (const SpeechSegment &word : segments)
            starts.append(word.timestamp);
        QCOMPARE(starts, QList<double>({1, 1, 2, 2}));
    }

    void marksAreNotWords()
    {
        test::RecognitionLog log;
        recognize("marks between", log, m_audio);
        QCOMPARE(log.words(),
                 QStringList({QStringLiteral("Hallo"), QStringLiteral("Welt"), QStringLiteral("(leise)")}));
    }

    void destroyingThePlatformEndsTheProgramAndLeavesNothing()
    {
        test::RecognitionLog log;
        makeRecognizer("hangs").recognitionTask(test::recognitionOf(m_audio), log.handler());
        QVERIFY(test::waitUntil([&] { return !log.partials().isEmpty(); }));
        m_runs.reset(); // returns only when the thread has ended
        QVERIFY(temporaryFolders().isEmpty());
        QVERIFY(!log.final() && !log.error());
    }

    void severalRecognitionsRunBesideEachOther()
    {
        std::array<test::RecognitionLog, 4> logs;
        WhisperRecognizer recognizer = makeRecognizer("good");
        for (test::RecognitionLog &log : logs)
            recognizer.recognitionTask(test::recognitionOf(m_audio), log.handler());
        for (test::RecognitionLog &log : logs) {
            QVERIFY(log.wait());
            QCOMPARE(log.words().size(), 5);
            QVERIFY(!log.brokeTheRules());
        }
    }

    void linesOfTheOutputAreRead_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("word");
        QTest::addColumn<double>("seconds");
        QTest::newRow("word") << QByteArray("[00:00:01.250 --> 00:00:01.500]   Hello")
                              << QStringLiteral("Hello") << 1.25;
        QTest::newRow("hours") << QByteArray("[02:03:04.005 --> 02:03:05.000]  late")
                               << QStringLiteral("late") << 7384.005;
        QTest::newRow("mark") << QByteArray("[00:00:00.000 --> 00:00:02.000]   [BLANK_AUDIO]") << QString()
                              << 0.0;
        QTest::newRow("no text") << QByteArray("[00:00:00.000 --> 00:00:02.000]   ") << QString() << 0.0;
        QTest::newRow("other") << QByteArray("whisper_model_load: loading model") << QString() << 0.0;
        QTest::newRow("empty") << QByteArray() << QString() << 0.0;
    }

    void linesOfTheOutputAreRead()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, word);
        QFETCH(double, seconds);
        const auto segment = parseWhisperLine(line);
        QCOMPARE(segment.has_value(), !word.isEmpty());
        if (segment) {
            QCOMPARE(segment->substring, word);
            QCOMPARE(segment->timestamp, seconds);
        }
    }

    void whatIsNoResultIsNotRead()
    {
        for (const char *text :
             {"", "null", "[]", "{}", "{\"transcription\":{}}", "{\"transcription\":[", "\xff\xfe\x00"})
            QVERIFY(!parseWhisperJson(text).has_value());
        // Entries of another shape are left out, not fatal.
        const auto words = parseWhisperJson(R"({"transcription":[1,null,{"text":5},{"text":"a"},
                                                {"text":"b","offsets":{"from":"x"}}]})");
        QVERIFY(words.has_value());
        QCOMPARE(words->size(), 2);
    }
};

QTEST_GUILESS_MAIN(WhisperRecognizerTest)
#include "WhisperRecognizerTest.moc"
