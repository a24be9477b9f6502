#include "platform/linux/speech/SpeechEngines.h"

#include "platform/linux/speech/LinuxSpeech.h"
#include "platform/linux/speech/PocketSphinxRecognizer.h"
#include "platform/linux/speech/SpeechModels.h"
#include "platform/linux/speech/WhisperProgram.h"
#include "platform/linux/speech/WhisperRecognizer.h"
#include "platform/linux/speech/WorkerProtocol.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace talvenor;

namespace {

const QString kGerman = QStringLiteral("de-DE");
const QString kEnglish = QStringLiteral("en-US");
const QString kChannel = QStringLiteral("com.talvenor.app.Platform");
constexpr qint64 kPlausibleSize = 30'000'000;

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("a test file cannot be written");
}

// The head of a real model on a file that is as large but takes no room on the disk.
void writeWhisperModel(const QString &path, qint32 vocabulary, qint64 size = kPlausibleSize,
                       quint32 magic = 0x67676d6c)
{
    QByteArray head(8, '\0');
    qToLittleEndian(magic, head.data());
    qToLittleEndian(vocabulary, head.data() + 4);
    writeFile(path, head);
    if (!QFile::resize(path, size))
        qFatal("a test file cannot be resized");
}

void writePocketSphinxModel(const QString &folder, const QString &without = QString())
{
    for (const char *name :
         {"en-us/mdef", "en-us/feat.params", "en-us/sendump", "en-us/means", "en-us/variances",
          "en-us/transition_matrices", "en-us.lm.bin", "cmudict-en-us.dict"}) {
        if (QString::fromLatin1(name) != without)
            writeFile(folder + QStringLiteral("/en-us/") + QString::fromLatin1(name), "x");
    }
}

} // namespace

/// Which engine recognises which language, and what the log says of what is missing.
class SpeechEnginesTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_root;
    std::shared_ptr<RecognitionRuns> m_runs = std::make_shared<RecognitionRuns>();
    SpeechSurroundings m_surroundings;

    [[nodiscard]] QString path(const char *name) const { return m_root->filePath(QString::fromLatin1(name)); }

    // whisper.cpp's program under one of its names.
    void installWhisper(const char *name = "bin/whisper-cli", const QByteArray &mode = "good")
    {
        QDir().mkpath(path("bin"));
        QVERIFY(QFile::copy(QFINDTESTDATA("whisper-stand-in.py"), path(name)));
        QVERIFY(QFile::setPermissions(path(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        writeFile(path("bin/mode"), mode);
    }

    void installWorker()
    {
        const QString worker = path("libexec/") + QString::fromLatin1(WorkerProtocol::kProgramName);
        writeFile(worker, "#!/bin/sh\n");
        QVERIFY(QFile::setPermissions(worker, QFile::ReadOwner | QFile::ExeOwner));
    }

    [[nodiscard]] std::unique_ptr<SpeechRecognizer> make(const QString &locale) const
    {
        return speechRecognizerForLocale(locale, m_surroundings, m_runs);
    }

    static bool isWhisper(const std::unique_ptr<SpeechRecognizer> &recognizer)
    {
        return dynamic_cast<const WhisperRecognizer *>(recognizer.get()) != nullptr;
    }
    static bool isPocketSphinx(const std::unique_ptr<SpeechRecognizer> &recognizer)
    {
        return dynamic_cast<const PocketSphinxRecognizer *>(recognizer.get()) != nullptr;
    }

private Q_SLOTS:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        m_surroundings = {
            {path("models"), path("system-models")}, {path("bin")}, {path("beside"), path("libexec")}};
    }

    void modelsAreLookedForInTheUsersFoldersFirst()
    {
        const QString data = qEnvironmentVariable("XDG_DATA_HOME");
        const QStringList folders = speechModelFolders();
        QCOMPARE(folders.size(), 5);
        QCOMPARE(folders[0], data + QStringLiteral("/talvenor/speech"));
        QCOMPARE(folders[1], data + QStringLiteral("/whisper"));
        QCOMPARE(folders[2], QStringLiteral("/usr/share/whisper-models"));
        QCOMPARE(folders[3], QStringLiteral("/usr/share/whisper.cpp"));
        QVERIFY(QFileInfo(folders[4] + QStringLiteral("/en-us/en-us/mdef")).exists());
    }

    void aModelFileIsExamined_data()
    {
        QTest::addColumn<int>("vocabulary");
        QTest::addColumn<qint64>("size");
        QTest::addColumn<quint32>("magic");
        QTest::addColumn<bool>("servesEnglish");
        QTest::addColumn<bool>("servesGerman");
        const quint32 magic = 0x67676d6c;
        QTest::newRow("English only") << 51864 << kPlausibleSize << magic << true << false;
        QTest::newRow("multilingual") << 51865 << kPlausibleSize << magic << true << true;
        QTest::newRow("large multilingual") << 51866 << kPlausibleSize << magic << true << true;
        QTest::newRow("no speech model") << 16 << kPlausibleSize << magic << false << false;
        QTest::newRow("negative") << -1 << kPlausibleSize << magic << false << false;
        QTest::newRow("absurd") << 2'000'000'000 << kPlausibleSize << magic << false << false;
        QTest::newRow("other magic") << 51865 << kPlausibleSize << 0x46554747U << false << false;
        QTest::newRow("cut short") << 51865 << qint64(5'000'000) << magic << false << false;
        QTest::newRow("cut in the head") << 51865 << qint64(6) << magic << false << false;
        QTest::newRow("empty") << 51865 << qint64(0) << magic << false << false;
    }

    void aModelFileIsExamined()
    {
        QFETCH(int, vocabulary);
        QFETCH(qint64, size);
        QFETCH(quint32, magic);
        QFETCH(bool, servesEnglish);
        QFETCH(bool, servesGerman);
        writeWhisperModel(path("models/ggml-test.bin"), vocabulary, size, magic);
        const auto english = findWhisperModel(m_surroundings.modelFolders, false);
        const auto german = findWhisperModel(m_surroundings.modelFolders, true);
        QCOMPARE(english.model.has_value(), servesEnglish);
        QCOMPARE(german.model.has_value(), servesGerman);
        if (!servesGerman)
            QVERIFY(german.problems.value(0).startsWith(path("models/ggml-test.bin")));
    }

    void theUsersModelComesFirstAndTheLargestOfAFolder()
    {
        writeWhisperModel(path("system-models/ggml-large.bin"), 51865, 90'000'000);
        writeWhisperModel(path("models/ggml-tiny.bin"), 51865, 20'000'000);
        writeWhisperModel(path("models/ggml-base.bin"), 51865, 40'000'000);
        writeWhisperModel(path("models/other.bin"), 51865, 80'000'000);
        const auto search = findWhisperModel(m_surroundings.modelFolders, true);
        QVERIFY(search.model.has_value());
        QCOMPARE(search.model->path, path("models/ggml-base.bin"));
    }

    void anIncompletePocketSphinxModelIsPassedBy_data()
    {
        QTest::addColumn<QString>("missing");
        for (const char *name :
             {"en-us/mdef", "en-us/feat.params", "en-us/sendump", "en-us/means", "en-us/variances",
              "en-us/transition_matrices", "en-us.lm.bin", "cmudict-en-us.dict"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void anIncompletePocketSphinxModelIsPassedBy()
    {
        QFETCH(QString, missing);
        const QString file = path("models/en-us/") + missing;
        writePocketSphinxModel(path("models"), missing);
        installWorker();
        for (const bool isEmpty : {false, true}) {
            if (isEmpty)
                writeFile(file, QByteArray());
            const test::LogCapture log;
            QVERIFY(!make(kEnglish));
            // The log names the very file.
            QCOMPARE(log.texts(kChannel).size(), 1);
            QVERIFY(
                log.texts(kChannel)[0].contains(file + QStringLiteral(" is missing, empty or cut short")));
        }
        // A complete one further on is taken.
        writePocketSphinxModel(path("system-models"));
        QVERIFY(isPocketSphinx(make(kEnglish)));
    }

    void theBestEngineIsTaken()
    {
        writePocketSphinxModel(path("system-models"));
        installWorker();
        QVERIFY(isPocketSphinx(make(kEnglish)));
        QVERIFY(!make(kGerman));

        writeWhisperModel(path("models/ggml-base.bin"), 51865);
        QVERIFY(isPocketSphinx(make(kEnglish))); // a model without the program
        QVERIFY(!make(kGerman));

        installWhisper();
        const test::LogCapture log;
        QVERIFY(isWhisper(make(kEnglish)));
        QVERIFY(isWhisper(make(kGerman)));
        QCOMPARE(log.texts(kChannel),
                 QStringList({QStringLiteral("Speech recogniser for en-US: whisper.cpp"),
                              QStringLiteral("Speech recogniser for de-DE: whisper.cpp")}));
    }

    void anEnglishOnlyModelIsNeverTakenForGerman()
    {
        installWhisper();
        writeWhisperModel(path("models/ggml-base.en.bin"), 51864);
        QVERIFY(isWhisper(make(kEnglish)));
        const test::LogCapture log;
        QVERIFY(!make(kGerman));
        QVERIFY(log.lines().value(0).startsWith(kChannel +
                                                QStringLiteral(" error: No speech recogniser for de-DE: ")));
        QVERIFY(log.lines().value(0).contains(path("models/ggml-base.en.bin is for English only")));
    }

    void theLogNamesWhatIsMissingAndWhereItWasLookedFor()
    {
        const test::LogCapture log;
        QVERIFY(!make(kGerman));
        QVERIFY(!make(kEnglish));
        const QString folders = path("models") + QStringLiteral(", ") + path("system-models");
        const QStringList texts = log.texts(kChannel);
        QCOMPARE(texts.size(), 2);
        QCOMPARE(texts[0],
                 QStringLiteral("No speech recogniser for de-DE: no usable ggml-*.bin in %1; no usable "
                                "whisper-cli, whisper-cpp or whispercpp in %2")
                     .arg(folders, path("bin")));
        QVERIFY(texts[1].contains(QStringLiteral("no complete folder en-us in ") + folders));
        QVERIFY(texts[1].contains(QStringLiteral("talvenor-speech-worker is missing in %1, %2")
                                      .arg(path("beside"), path("libexec"))));
    }

    void otherLocalesAreNotKnown()
    {
        installWhisper();
        writeWhisperModel(path("models/ggml-base.bin"), 51865);
        for (const char *locale : {"fr-FR", "en-GB", "de", "en", "", "de-DE\n"})
            QVERIFY(!make(QString::fromLatin1(locale)));
    }

    void theProgramIsFoundByItsNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isFound");
        QTest::newRow("whisper-cli") << QStringLiteral("bin/whisper-cli") << true;
        QTest::newRow("whisper-cpp") << QStringLiteral("bin/whisper-cpp") << true;
        QTest::newRow("whispercpp") << QStringLiteral("bin/whispercpp") << true;
        QTest::newRow("main") << QStringLiteral("bin/main") << false;
        QTest::newRow("whisper") << QStringLiteral("bin/whisper") << false;
    }

    void theProgramIsFoundByItsNames()
    {
        QFETCH(QString, name);
        QFETCH(bool, isFound);
        installWhisper(name.toLatin1().constData());
        QStringList problems;
        const auto program = findWhisperProgram(m_surroundings.programFolders, problems);
        QCOMPARE(program.has_value(), isFound);
        if (isFound)
            QCOMPARE(*program, m_root->filePath(name));
    }

    void theProgramsHelpDecides_data()
    {
        QTest::addColumn<QByteArray>("mode");
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("good") << QByteArray("good") << true;
        QTest::newRow("help with a failure code") << QByteArray("help fails") << true;
        QTest::newRow("without -oj") << QByteArray("without -oj") << false;
        QTest::newRow("without -sow") << QByteArray("without -sow") << false;
    }

    void theProgramsHelpDecides()
    {
        QFETCH(QByteArray, mode);
        QFETCH(bool, isTaken);
        installWhisper("bin/whisper-cli", mode);
        QStringList problems;
        QCOMPARE(findWhisperProgram(m_surroundings.programFolders, problems).has_value(), isTaken);
        if (!isTaken)
            QVERIFY(problems.value(0).contains(QStringLiteral("does not know -")));
    }

    void anOlderProgramIsPassedByForAnother()
    {
        installWhisper("bin/whisper-cpp");
        // The best name belongs to a program that is none.
        writeFile(path("bin/whisper-cli"), "#!/bin/sh\necho something else\n");
        QVERIFY(QFile::setPermissions(path("bin/whisper-cli"), QFile::ReadOwner | QFile::ExeOwner));
        QStringList problems;
        QCOMPARE(findWhisperProgram(m_surroundings.programFolders, problems).value_or(QString()),
                 path("bin/whisper-cpp"));
    }

    void availabilityIsThatOfTheMoment()
    {
        installWhisper();
        writeWhisperModel(path("models/ggml-base.bin"), 51865);
        const auto whisper = make(kGerman);
        QVERIFY(whisper->isAvailable());
        QVERIFY(whisper->supportsOnDeviceRecognition());
        QVERIFY(QFile::remove(path("models/ggml-base.bin")));
        QVERIFY(!whisper->isAvailable());

        writePocketSphinxModel(path("system-models"));
        installWorker();
        const auto sphinx = make(kEnglish);
        QVERIFY(sphinx->isAvailable());
        QVERIFY(sphinx->supportsOnDeviceRecognition());
        writeFile(path("system-models/en-us/en-us/mdef"), QByteArray());
        QVERIFY(!sphinx->isAvailable());
    }

    void thePlatformHasTheEnginesOfThisMachine()
    {
        qputenv("PATH", path("bin").toLocal8Bit() + ":/usr/bin:/bin");
        Platform platform;
        installLinuxSpeech(platform);
        // The tests' program stands beside the folder of the helper, as the package's program does.
        QVERIFY(isPocketSphinx(platform.createSpeechRecognizer(kEnglish)));
        QVERIFY(!platform.createSpeechRecognizer(kGerman));

        const QString models = qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/talvenor/speech");
        writeWhisperModel(models + QStringLiteral("/ggml-small.bin"), 51865);
        installWhisper("bin/whispercpp");
        QVERIFY(isWhisper(platform.createSpeechRecognizer(kGerman)));
        QVERIFY(QDir(models).removeRecursively());
    }
};

QTEST_GUILESS_MAIN(SpeechEnginesTest)
#include "SpeechEnginesTest.moc"
