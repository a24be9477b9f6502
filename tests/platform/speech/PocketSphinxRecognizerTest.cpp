#include "platform/linux/speech/PocketSphinxRecognizer.h"

#include "RecognitionLog.h"
#include "platform/linux/speech/SpeechEngines.h"
#include "platform/linux/speech/WorkerProtocol.h"
#include "speech_support/SpokenAudio.h"
#include "speech_support/WordErrors.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace talvenor;

namespace {

void append(test::Samples &samples, const test::Samples &more)
{
    samples.insert(samples.end(), more.begin(), more.end());
}

// The workers that recognise the file, by their command lines.
QList<pid_t> workersOn(const QString &audio)
{
    QList<pid_t> found;
    for (const QString &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile commandLine(QStringLiteral("/proc/") + entry + QStringLiteral("/cmdline"));
        if (entry.toInt() > 0 && commandLine.open(QIODevice::ReadOnly)) {
            const QByteArray text = commandLine.readAll();
            if (text.contains("talvenor-speech-worker") && text.contains(QFile::encodeName(audio)))
                found.append(entry.toInt());
        }
    }
    return found;
}

} // namespace

/// Recognition by the real helper program and the real model.
class PocketSphinxRecognizerTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    std::shared_ptr<RecognitionRuns> m_runs;
    QString m_worker;
    PocketSphinxModel m_model;

    [[nodiscard]] QString path(const char *name) const
    {
        return m_folder.filePath(QString::fromLatin1(name));
    }

    void start(test::RecognitionLog &log, const QString &audio)
    {
        PocketSphinxRecognizer(m_runs, m_worker, m_model)
            .recognitionTask(test::recognitionOf(audio), log.handler());
    }

    void recognize(test::RecognitionLog &log, const QString &audio)
    {
        start(log, audio);
        QVERIFY(log.wait());
        QVERIFY(!log.brokeTheRules());
    }

    // A helper of another kind, as a script.
    void installScript(const QByteArray &text)
    {
        QFile file(path("worker"));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write("#!/bin/sh\n" + text), text.size() + 10);
        file.close();
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        m_worker = file.fileName();
    }

private Q_SLOTS:
    void init()
    {
        m_runs = std::make_shared<RecognitionRuns>();
        const SpeechSurroundings surroundings = SpeechSurroundings::standard();
        m_worker = QStandardPaths::findExecutable(QString::fromLatin1(WorkerProtocol::kProgramName),
                                                  surroundings.workerFolders);
        QVERIFY(!m_worker.isEmpty());
        const auto search = findPocketSphinxModel(surroundings.modelFolders);
        QVERIFY(search.model.has_value());
        m_model = *search.model;
    }

    void eachVoiceIsUnderstood_data()
    {
        QTest::addColumn<QString>("voice");
        for (const char *voice : {"slt", "rms", "awb", "kal16"})
            QTest::newRow(voice) << QString::fromLatin1(voice);
    }

    void eachVoiceIsUnderstood()
    {
        QFETCH(QString, voice);
        const QString text =
            QStringLiteral("good morning everyone and thank you for joining the weekly planning meeting");
        const QString audio = path("voice.m4a");
        test::writeM4a(audio, test::speak(voice, text));
        test::RecognitionLog log;
        recognize(log, audio);
        const test::WordAlignment alignment = test::alignWords(text.split(u' '), log.words());
        QVERIFY2(alignment.errors <= 2, qPrintable(log.words().join(u' ')));
    }

    void timesAreThoseOfTheFile()
    {
        // Two sentences with a long pause between them, which is not decoded and must not shift anything.
        const test::Samples first =
            test::speak(QStringLiteral("slt"), QStringLiteral("good morning everyone"));
        const test::Samples second =
            test::speak(QStringLiteral("rms"), QStringLiteral("thank you very much"));
        test::Samples samples = test::silence(3.21);
        append(samples, first);
        append(samples, test::silence(25));
        const double secondAt = double(samples.size()) / test::kSampleRate + test::onset(second);
        append(samples, second);
        const QString audio = path("times.m4a");
        test::writeM4a(audio, samples);
        test::RecognitionLog log;
        recognize(log, audio);
        const auto segments = log.final()->segments;
        const auto afterPause = std::find_if(segments.begin(), segments.end(),
                                             [](const SpeechSegment &word) { return word.timestamp > 15; });
        QVERIFY(segments.size() > 4 && afterPause != segments.end());
        QVERIFY(std::abs(segments[0].timestamp - 3.21 - test::onset(first)) < 0.15);
        QVERIFY2(std::abs(afterPause->timestamp - secondAt) < 0.15,
                 qPrintable(QStringLiteral("%1 for %2").arg(afterPause->timestamp).arg(secondAt)));
        for (qsizetype index = 1; index < segments.size(); ++index)
            QVERIFY(segments[index].timestamp > segments[index - 1].timestamp);
    }

    void soundWithoutSpeechIsTheNoSpeechError_data()
    {
        QTest::addColumn<test::Samples>("samples");
        QTest::newRow("silence") << test::silence(10);
        QTest::newRow("very short") << test::silence(0.05);
        QTest::newRow("quiet noise") << test::noise(10, -60);
        QTest::newRow("loud noise") << test::noise(10, -15);
        QTest::newRow("hum") << test::tone(10, 50, -20);
        QTest::newRow("whistle") << test::tone(10, 2000, -10);
    }

    void soundWithoutSpeechIsTheNoSpeechError()
    {
        QFETCH(test::Samples, samples);
        const QString audio = path("quiet.m4a");
        test::writeM4a(audio, samples);
        test::RecognitionLog log;
        recognize(log, audio);
        QVERIFY(log.error().has_value());
        QCOMPARE(log.error()->code, 1110);
        QVERIFY(log.partials().isEmpty());
    }

    void audioThatCannotBeReadIsTold_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QByteArray() << QStringLiteral("The audio file is empty.");
        QTest::newRow("text") << QByteArray("no sound ").repeated(500)
                              << QStringLiteral("The file contains no audio that can be read.");
    }

    void audioThatCannotBeReadIsTold()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, text);
        QFile file(path("unreadable.m4a"));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(content), content.size());
        file.close();
        test::RecognitionLog log;
        recognize(log, file.fileName());
        QVERIFY(log.error().has_value());
        QCOMPARE(log.error()->code, int(audioNotReadable));
        QCOMPARE(log.error()->localizedDescription, text);
    }

    void aMissingFileIsTold()
    {
        test::RecognitionLog log;
        // Its name must not make an error look like silence.
        recognize(log, path("No speech.m4a"));
        QVERIFY(log.error().has_value());
        QCOMPARE(log.error()->code, int(audioNotReadable));
        QVERIFY(log.error()->localizedDescription.startsWith(
            QStringLiteral("The audio file cannot be opened: No such file")));
    }

    void aDamagedModelIsAnOrdinaryError_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("isCut");
        for (const char *file : {"en-us/mdef", "en-us/feat.params", "en-us/sendump", "en-us/means",
                                 "en-us/transition_matrices", "en-us.lm.bin", "cmudict-en-us.dict"}) {
            QTest::addRow("%s cut", file) << QString::fromLatin1(file) << true;
            QTest::addRow("%s overwritten", file) << QString::fromLatin1(file) << false;
        }
    }

    void aDamagedModelIsAnOrdinaryError()
    {
        QFETCH(QString, file);
        QFETCH(bool, isCut);
        // A copy of the model by links, with one file of its own.
        const QString system = QFileInfo(m_model.languageModel).path();
        const QTemporaryDir copy;
        QVERIFY(QDir(copy.path()).mkdir(QStringLiteral("en-us")));
        for (const QString &folder : {QString(), QStringLiteral("en-us/")}) {
            const QFileInfoList files = QDir(system + u'/' + folder).entryInfoList(QDir::Files);
            for (const QFileInfo &original : files)
                QVERIFY(QFile::link(original.filePath(), copy.filePath(folder + original.fileName())));
        }
        const QString damaged = copy.filePath(file);
        QFile original(system + u'/' + file);
        QVERIFY(original.open(QIODevice::ReadOnly));
        QByteArray content = isCut ? original.read(original.size() / 3) : original.readAll();
        if (!isCut)
            content.replace(200, std::min<qsizetype>(5000, content.size() - 200),
                            QByteArray(std::min<qsizetype>(5000, content.size() - 200), '\xfe'));
        QVERIFY(QFile::remove(damaged));
        QFile replacement(damaged);
        QVERIFY(replacement.open(QIODevice::WriteOnly));
        QCOMPARE(replacement.write(content), content.size());
        replacement.close();

        m_model = {copy.filePath(QStringLiteral("en-us")), copy.filePath(QStringLiteral("en-us.lm.bin")),
                   copy.filePath(QStringLiteral("cmudict-en-us.dict"))};
        if (isCut && file == QStringLiteral("en-us/mdef")) {
            // The library would read beyond its end and understand nothing, which would look like silence.
            QCOMPARE(incompleteFile(m_model), std::optional(damaged));
            QVERIFY(!PocketSphinxRecognizer(m_runs, m_worker, m_model).isAvailable());
            return;
        }
        QVERIFY(!incompleteFile(m_model).has_value());
        const QString audio = path("short.wav");
        test::writeWave(audio, test::speak(QStringLiteral("slt"), QStringLiteral("hello everyone")));
        test::RecognitionLog log;
        recognize(log, audio);
        // Some damage only makes it understand worse; what must not happen is that it is taken for silence or
        // that anything else is lost.
        if (log.error()) {
            QVERIFY2(log.error()->code == engineFailed || log.error()->code == modelNotLoaded ||
                         (log.error()->code == noSpeechDetected && !isCut),
                     qPrintable(QString::number(log.error()->code)));
            QVERIFY(!log.error()->localizedDescription.isEmpty());
        }
    }

    void partialResultsArriveWhileItDecodes()
    {
        const QString audio = path("long.m4a");
        test::Samples samples;
        for (int round = 0; round < 6; ++round) {
            append(samples, test::speak(QStringLiteral("slt"),
                                        QStringLiteral("we should look at the problems before we go on")));
            append(samples, test::silence(1));
        }
        test::writeM4a(audio, samples);
        test::RecognitionLog log;
        start(log, audio);
        QVERIFY(test::waitUntil([&] { return !log.partials().isEmpty(); }, 240'000));
        QCOMPARE(workersOn(audio).size(), 1); // it is still at work
        QVERIFY(log.wait());
        const QList<SpeechResult> partials = log.partials();
        QVERIFY(partials[0].segments.size() < log.final()->segments.size());
        // Each is the whole list so far.
        for (const SpeechResult &partial : partials) {
            for (qsizetype index = 0; index < partial.segments.size(); ++index)
                QCOMPARE(partial.segments[index].substring, log.final()->segments[index].substring);
        }
        QVERIFY(test::waitUntil([&] { return workersOn(audio).isEmpty(); }));
    }

    void aWorkerThatIsKilledIsAnOrdinaryErrorAfterTheWordsSoFar()
    {
        const QString audio = path("killed.m4a");
        test::Samples samples;
        for (int round = 0; round < 20; ++round) {
            append(samples,
                   test::speak(QStringLiteral("rms"), QStringLiteral("we should look at the problems")));
            append(samples, test::silence(1));
        }
        test::writeM4a(audio, samples);
        const test::LogCapture capture;
        test::RecognitionLog log;
        start(log, audio);
        QVERIFY(test::waitUntil([&] { return !log.partials().isEmpty(); }, 240'000));
        const QList<pid_t> workers = workersOn(audio);
        QCOMPARE(workers.size(), 1);
        QCOMPARE(::kill(workers[0], SIGKILL), 0);
        QVERIFY(log.wait());
        QVERIFY(!log.brokeTheRules());
        QVERIFY(log.error().has_value());
        QCOMPARE(log.error()->code, int(engineFailed));
        QCOMPARE(log.error()->localizedDescription,
                 QStringLiteral("The recogniser ended unexpectedly (signal 9)."));
        QVERIFY(capture.contains(QStringLiteral("com.talvenor.app.Platform"), QStringLiteral("error"),
                                 QStringLiteral("The speech worker ended with signal 9")));
    }

    void destroyingThePlatformEndsTheWorker()
    {
        const QString audio = path("ended.m4a");
        test::Samples samples;
        for (int round = 0; round < 10; ++round)
            append(samples,
                   test::speak(QStringLiteral("rms"), QStringLiteral("we should look at the problems")));
        test::writeM4a(audio, samples);
        test::RecognitionLog log;
        start(log, audio);
        QVERIFY(test::waitUntil([&] { return !workersOn(audio).isEmpty(); }));
        m_runs.reset();
        QVERIFY(workersOn(audio).isEmpty());
        QVERIFY(!log.final() && !log.error());
    }

    void anOutputThatBreaksOffIsNotTakenForAWholeOne()
    {
        installScript("printf 'word\\t100\\thello\\n'\n");
        test::RecognitionLog log;
        recognize(log, path("any.m4a"));
        QVERIFY(log.error().has_value());
        QCOMPARE(log.error()->code, int(engineFailed));
        // The words so far have come before the error.
        QCOMPARE(log.partials().size(), 1);
    }

    void wordsThatWereHeldBackComeBeforeAnError()
    {
        installScript("for n in 1 2 3 4 5; do printf \"word\\t${n}00\\tw$n\\n\"; done; exit 9\n");
        test::RecognitionLog log;
        recognize(log, path("any.m4a"));
        QCOMPARE(log.error()->localizedDescription,
                 QStringLiteral("The recogniser ended unexpectedly (exit code 9)."));
        QCOMPARE(log.partials().last().segments.size(), 5);
    }

    void linesThatAreNoneAreLeftOut()
    {
        installScript("printf 'word\\t100\\thello\\nnonsense\\nword\\t-5\\tx\\nword\\tx\\ty\\nword\\t1\\n"
                      "word\\t200\\t\\377\\nword\\t300\\tworld\\nend\\n'\n");
        test::RecognitionLog log;
        recognize(log, path("any.m4a"));
        QCOMPARE(log.words(),
                 QStringList({QStringLiteral("hello"), QStringLiteral("\uFFFD"), QStringLiteral("world")}));
    }

    void theHelperTellsHowItWantsToBeCalled()
    {
        ChildProcess process(m_worker, {QStringLiteral("only"), QStringLiteral("two")});
        const auto ending = process.wait([](const QByteArray &) {});
        QCOMPARE(ending.number, int(WorkerProtocol::wrongArguments));
        QVERIFY(process.errorOutput().startsWith("usage: talvenor-speech-worker "));
    }

    void whatTheHelperWritesIsReadAgain()
    {
        const auto word = WorkerProtocol::parseWordLine(WorkerProtocol::wordLine(12340, "don't").trimmed());
        QVERIFY(word.has_value());
        QCOMPARE(word->substring, QStringLiteral("don't"));
        QCOMPARE(word->timestamp, 12.34);
        QCOMPARE(
            WorkerProtocol::parseErrorLine(WorkerProtocol::errorLine(QStringLiteral("two\nlines")).trimmed()),
            std::optional(QStringLiteral("two lines")));
        QVERIFY(WorkerProtocol::isEndLine(WorkerProtocol::endLine().trimmed()));
        QVERIFY(!WorkerProtocol::isEndLine("ends"));
    }
};

QTEST_GUILESS_MAIN(PocketSphinxRecognizerTest)
#include "PocketSphinxRecognizerTest.moc"
