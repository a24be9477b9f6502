#include "settings/AppSettings.h"
#include "settings/L10n.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <cstdio>
#include <thread>

namespace talvenor {

namespace {

using Values = QMap<QString, QString>;

/// What the child processes do: carry out the commands in order, then print all values, each as a line.
int childMain(const QStringList &commands)
{
    AppSettings &settings = AppSettings::shared();
    int notifications = 0;
    QObject::connect(&settings, &AppSettings::changed, [&notifications] { ++notifications; });
    const auto print = [](const char *name, const QString &value) {
        std::printf("%s=%s\n", name, value.toUtf8().constData());
    };
    for (const QString &command : commands) {
        if (command == u"storageURL")
            print("storageURL", settings.storageURL());
        else if (command == u"audioDirectory")
            print("audioDirectory", settings.audioDirectory());
        else if (command == u"clear")
            settings.setStorageDirectory(QString());
        else if (command == u"write") {
            settings.setAppLanguage(AppLanguage::german);
            settings.setAudioSource(AudioSource::both);
            settings.setTranscriptionLanguage(TranscriptionLanguage::english);
            settings.setAutoTranscribe(false);
            settings.setAutoSummarize(false);
            settings.setHasCompletedSetup(true);
            settings.setOpenAIAPIKey(QStringLiteral("key; with, \"odd\" = characters ä\n"));
        }
    }
    print("storageDirectory", settings.storageDirectory());
    print("openAIAPIKey", settings.openAIAPIKey());
    print("audioSource", stringForm(settings.audioSource()));
    print("transcriptionLanguage", stringForm(settings.transcriptionLanguage()));
    print("appLanguage", stringForm(settings.appLanguage()));
    print("autoTranscribe", QVariant(settings.autoTranscribe()).toString());
    print("autoSummarize", QVariant(settings.autoSummarize()).toString());
    print("hasCompletedSetup", QVariant(settings.hasCompletedSetup()).toString());
    print("settingsText", L10n::settings());
    print("notifications", QString::number(notifications));
    return 0;
}

} // namespace

class AppSettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    // First, because the thread sanitizer allows no new threads once child processes have been started.
    void otherThreadsReadWhileTheMainThreadWrites();
    void valuesThatWereNeverWrittenHaveTheirDefaultsAndStayUnwritten();
    void theDefaultsDoNotDependOnTheSystemsLanguage_data();
    void theDefaultsDoNotDependOnTheSystemsLanguage();
    void valuesSurviveARestartUnderTheirKeys();
    void unknownStoredStringsReadAsTheFallbackAndAreNotRewritten();
    void writingReplacesAnUnknownString();
    void aDamagedFileReadsAsDefaults_data();
    void aDamagedFileReadsAsDefaults();
    void aFileThatCannotBeWrittenIsNoFailure();

    void theFirstReadingOfTheFolderCreatesAndStoresTheDefault();
    void theDefaultFolderIsStoredEvenIfItCannotBeCreated();
    void aStoredDefaultStaysWhenTheDocumentsDirectoryMoves();
    void aChosenFolderIsNeitherTestedNorCreated();
    void theAudioFolderComesBackWithEverythingAboveIt();
    void clearingTheFolderFallsBackToTheDefault();

    void eachWriteStoresFirstAndNotifiesOnce();
    void theAudioFolderNotifiesOnlyWhenTheDefaultIsStored();

private:
    [[nodiscard]] QString place(const QString &name) const { return m_home->filePath(name); }
    [[nodiscard]] QString settingsFile() const
    {
        return place(QStringLiteral("config/talvenor/talvenor.conf"));
    }
    void writeSettingsFile(const QByteArray &content) const;
    [[nodiscard]] QByteArray readSettingsFile() const;
    /// Runs a process of its own on this test's home and gives what it has printed.
    [[nodiscard]] Values run(const QStringList &commands = {},
                             const QString &locale = QStringLiteral("C.UTF-8"));

    std::unique_ptr<QTemporaryDir> m_home;
};

void AppSettingsTest::init()
{
    m_home = std::make_unique<QTemporaryDir>();
}

void AppSettingsTest::writeSettingsFile(const QByteArray &content) const
{
    QDir().mkpath(QFileInfo(settingsFile()).path());
    QFile file(settingsFile());
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("the settings file cannot be written");
}

QByteArray AppSettingsTest::readSettingsFile() const
{
    QFile file(settingsFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Values AppSettingsTest::run(const QStringList &commands, const QString &locale)
{
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), m_home->path());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), place(QStringLiteral("config")));
    for (const char *name : {"LANG", "LC_ALL", "LANGUAGE", "LC_MESSAGES"})
        environment.insert(QString::fromLatin1(name), locale);
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), QStringList{QStringLiteral("--child")} + commands);
    if (!child.waitForFinished(30'000) || child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0)
        return {};
    Values values;
    for (const QString &line : QString::fromUtf8(child.readAllStandardOutput()).split(u'\n')) {
        if (const qsizetype sign = line.indexOf(u'='); sign > 0)
            values.insert(line.left(sign), line.mid(sign + 1));
    }
    return values;
}

void AppSettingsTest::valuesThatWereNeverWrittenHaveTheirDefaultsAndStayUnwritten()
{
    const Values expected{
        {QStringLiteral("storageDirectory"), QString()},
        {QStringLiteral("openAIAPIKey"), QString()},
        {QStringLiteral("audioSource"), QStringLiteral("systemAudio")},
        {QStringLiteral("transcriptionLanguage"), QStringLiteral("de-DE")},
        {QStringLiteral("appLanguage"), QStringLiteral("en")},
        {QStringLiteral("autoTranscribe"), QStringLiteral("true")},
        {QStringLiteral("autoSummarize"), QStringLiteral("true")},
        {QStringLiteral("hasCompletedSetup"), QStringLiteral("false")},
        {QStringLiteral("settingsText"), QStringLiteral("Settings")},
        {QStringLiteral("notifications"), QStringLiteral("0")},
    };
    QCOMPARE(run(), expected);
    QVERIFY(!QFileInfo::exists(settingsFile()));
}

void AppSettingsTest::theDefaultsDoNotDependOnTheSystemsLanguage_data()
{
    QTest::addColumn<QString>("locale");
    for (const char *locale : {"de_DE.UTF-8", "en_US.UTF-8", "fr_FR.UTF-8", "C"})
        QTest::newRow(locale) << QString::fromLatin1(locale);
}

void AppSettingsTest::theDefaultsDoNotDependOnTheSystemsLanguage()
{
    QFETCH(QString, locale);
    Values values = run({}, locale);
    QCOMPARE(values.value(QStringLiteral("appLanguage")), QStringLiteral("en"));
    QCOMPARE(values.value(QStringLiteral("settingsText")), QStringLiteral("Settings"));
    QCOMPARE(values.value(QStringLiteral("transcriptionLanguage")), QStringLiteral("de-DE"));
    // And what is chosen holds on every system.
    writeSettingsFile("[General]\nappLanguage=de\ntranscriptionLanguage=en-US\n");
    values = run({}, locale);
    QCOMPARE(values.value(QStringLiteral("settingsText")), QStringLiteral("Einstellungen"));
    QCOMPARE(values.value(QStringLiteral("transcriptionLanguage")), QStringLiteral("en-US"));
}

void AppSettingsTest::valuesSurviveARestartUnderTheirKeys()
{
    const Values written = run({QStringLiteral("write"), QStringLiteral("storageURL")});
    QCOMPARE(written.value(QStringLiteral("notifications")), QStringLiteral("8"));
    const Values values = run();
    QCOMPARE(values.value(QStringLiteral("appLanguage")), QStringLiteral("de"));
    QCOMPARE(values.value(QStringLiteral("audioSource")), QStringLiteral("both"));
    QCOMPARE(values.value(QStringLiteral("transcriptionLanguage")), QStringLiteral("en-US"));
    QCOMPARE(values.value(QStringLiteral("autoTranscribe")), QStringLiteral("false"));
    QCOMPARE(values.value(QStringLiteral("autoSummarize")), QStringLiteral("false"));
    QCOMPARE(values.value(QStringLiteral("hasCompletedSetup")), QStringLiteral("true"));
    QCOMPARE(values.value(QStringLiteral("openAIAPIKey")),
             QStringLiteral("key; with, \"odd\" = characters ä"));
    QCOMPARE(values.value(QStringLiteral("storageDirectory")), place(QStringLiteral("Documents/Talvenor")));

    const QByteArray text = readSettingsFile();
    QVERIFY(text.startsWith("[General]\n"));
    QCOMPARE(text.count('['), 1);
    for (const char *line : {"\nappLanguage=de\n", "\naudioSource=both\n", "\ntranscriptionLanguage=en-US\n",
                             "\nautoTranscribe=false\n", "\nautoSummarize=false\n",
                             "\nhasCompletedSetup=true\n", "\nopenAIAPIKey=", "\nstorageDirectory="})
        QVERIFY2(text.contains(line), line);
}

void AppSettingsTest::unknownStoredStringsReadAsTheFallbackAndAreNotRewritten()
{
    const QByteArray text = "[General]\nappLanguage=fr\naudioSource=Both\ntranscriptionLanguage=de\n";
    writeSettingsFile(text);
    const Values values = run({QStringLiteral("none")});
    QCOMPARE(values.value(QStringLiteral("appLanguage")), QStringLiteral("en"));
    QCOMPARE(values.value(QStringLiteral("settingsText")), QStringLiteral("Settings"));
    QCOMPARE(values.value(QStringLiteral("audioSource")), QStringLiteral("systemAudio"));
    QCOMPARE(values.value(QStringLiteral("transcriptionLanguage")), QStringLiteral("de-DE"));
    QCOMPARE(readSettingsFile(), text);
}

void AppSettingsTest::writingReplacesAnUnknownString()
{
    writeSettingsFile("[General]\nappLanguage=fr\nsomethingElse=kept\n");
    QCOMPARE(run({QStringLiteral("write")}).value(QStringLiteral("appLanguage")), QStringLiteral("de"));
    QVERIFY(readSettingsFile().contains("appLanguage=de\n"));
    QVERIFY(!readSettingsFile().contains("=fr"));
    QVERIFY(readSettingsFile().contains("somethingElse=kept\n"));
}

void AppSettingsTest::aDamagedFileReadsAsDefaults_data()
{
    QTest::addColumn<QByteArray>("content");
    QByteArray binary;
    for (int i = 0; i < 65536; ++i)
        binary.append(static_cast<char>(i * 167 >> 3));
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("binary") << binary;
    QTest::newRow("no sections") << QByteArray("\n\n====\n]][[\n");
    QTest::newRow("lists") << QByteArray("[General]\nappLanguage=de, en\naudioSource=both, both\n"
                                         "transcriptionLanguage=a, b\nstorageDirectory=/a, /b\n"
                                         "autoTranscribe=false, false\nopenAIAPIKey=a, b\n");
    QTest::newRow("other types") << QByteArray(
        "[General]\nappLanguage=@ByteArray(de)\naudioSource=@Invalid()\n"
        "storageDirectory=@Rect(1 2 3 4)\nautoTranscribe=@Invalid()\nautoSummarize=@Size(0 0)\n"
        "openAIAPIKey=@Variant(\\0\\0\\0\\x7f\\xff\\xff\\xff\\xff)\n");
    QTest::newRow("other sections") << QByteArray("[Other]\nappLanguage=de\n[%General]\naudioSource=both\n");
    QTest::newRow("one long line") << "[General]\nx=" + QByteArray(2'000'000, 'y') + '\n';
}

void AppSettingsTest::aDamagedFileReadsAsDefaults()
{
    QFETCH(QByteArray, content);
    writeSettingsFile(content);
    const Values values = run();
    QCOMPARE(values.value(QStringLiteral("storageDirectory"), QStringLiteral("none")), QString());
    QCOMPARE(values.value(QStringLiteral("openAIAPIKey"), QStringLiteral("none")), QString());
    QCOMPARE(values.value(QStringLiteral("appLanguage")), QStringLiteral("en"));
    QCOMPARE(values.value(QStringLiteral("audioSource")), QStringLiteral("systemAudio"));
    QCOMPARE(values.value(QStringLiteral("transcriptionLanguage")), QStringLiteral("de-DE"));
    QCOMPARE(values.value(QStringLiteral("autoTranscribe")), QStringLiteral("true"));
    QCOMPARE(values.value(QStringLiteral("autoSummarize")), QStringLiteral("true"));
    QCOMPARE(values.value(QStringLiteral("hasCompletedSetup")), QStringLiteral("false"));
    // And it can be written to.
    QCOMPARE(run({QStringLiteral("write")}).value(QStringLiteral("appLanguage")), QStringLiteral("de"));
    QCOMPARE(run().value(QStringLiteral("appLanguage")), QStringLiteral("de"));
}

void AppSettingsTest::aFileThatCannotBeWrittenIsNoFailure()
{
    // A folder in its place cannot be written even by the administrator.
    QVERIFY(QDir().mkpath(settingsFile()));
    const Values values = run({QStringLiteral("write")});
    QCOMPARE(values.value(QStringLiteral("appLanguage")), QStringLiteral("de"));
    QCOMPARE(values.value(QStringLiteral("notifications")), QStringLiteral("7"));
    QVERIFY(QFileInfo(settingsFile()).isDir());
}

void AppSettingsTest::theFirstReadingOfTheFolderCreatesAndStoresTheDefault()
{
    const QString folder = place(QStringLiteral("Documents/Talvenor"));
    const Values values = run({QStringLiteral("storageURL")});
    QCOMPARE(values.value(QStringLiteral("storageURL")), folder);
    QCOMPARE(values.value(QStringLiteral("storageDirectory")), folder);
    QCOMPARE(values.value(QStringLiteral("notifications")), QStringLiteral("1"));
    QVERIFY(QFileInfo(folder).isDir());
    QVERIFY(!QFileInfo::exists(folder + QStringLiteral("/Recordings")));
    // From now on it is a choice like any other.
    QCOMPARE(run({QStringLiteral("storageURL")}).value(QStringLiteral("notifications")), QStringLiteral("0"));
}

void AppSettingsTest::theDefaultFolderIsStoredEvenIfItCannotBeCreated()
{
    QFile inTheWay(place(QStringLiteral("Documents")));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    const Values values = run({QStringLiteral("storageURL"), QStringLiteral("audioDirectory")});
    const QString folder = place(QStringLiteral("Documents/Talvenor"));
    QCOMPARE(values.value(QStringLiteral("storageURL")), folder);
    QCOMPARE(values.value(QStringLiteral("storageDirectory")), folder);
    QCOMPARE(values.value(QStringLiteral("audioDirectory")), folder + QStringLiteral("/Recordings"));
    QVERIFY(!QFileInfo::exists(folder));
}

void AppSettingsTest::aStoredDefaultStaysWhenTheDocumentsDirectoryMoves()
{
    static_cast<void>(run({QStringLiteral("storageURL")}));
    QFile directories(place(QStringLiteral("config/user-dirs.dirs")));
    QVERIFY(directories.open(QIODevice::WriteOnly));
    directories.write("XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n");
    directories.close();
    QCOMPARE(run({QStringLiteral("storageURL")}).value(QStringLiteral("storageURL")),
             place(QStringLiteral("Documents/Talvenor")));
    // Cleared, the default comes out anew.
    QCOMPARE(run({QStringLiteral("clear"), QStringLiteral("storageURL")}).value(QStringLiteral("storageURL")),
             place(QStringLiteral("Papers/Talvenor")));
}

void AppSettingsTest::aChosenFolderIsNeitherTestedNorCreated()
{
    AppSettings &settings = AppSettings::shared();
    const QString chosen = place(QStringLiteral("not/there"));
    settings.setStorageDirectory(chosen);
    QCOMPARE(settings.storageURL(), chosen);
    QVERIFY(!QFileInfo::exists(place(QStringLiteral("not"))));
}

void AppSettingsTest::theAudioFolderComesBackWithEverythingAboveIt()
{
    AppSettings &settings = AppSettings::shared();
    const QString chosen = place(QStringLiteral("not/there"));
    settings.setStorageDirectory(chosen);
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(settings.audioDirectory(), chosen + QStringLiteral("/Recordings"));
        QVERIFY(QFileInfo(chosen + QStringLiteral("/Recordings")).isDir());
        QVERIFY(QDir(place(QStringLiteral("not"))).removeRecursively());
    }
}

void AppSettingsTest::clearingTheFolderFallsBackToTheDefault()
{
    writeSettingsFile("[General]\nstorageDirectory=/chosen\n");
    const Values values = run({QStringLiteral("clear"), QStringLiteral("storageURL")});
    QCOMPARE(values.value(QStringLiteral("storageDirectory")), place(QStringLiteral("Documents/Talvenor")));
    QCOMPARE(values.value(QStringLiteral("notifications")), QStringLiteral("2"));
}

void AppSettingsTest::eachWriteStoresFirstAndNotifiesOnce()
{
    AppSettings &settings = AppSettings::shared();
    const auto check = [&settings](auto write, auto read, auto values) {
        for (const auto &value : values) {
            int notifications = 0;
            bool wasStored = false;
            const auto connection = QObject::connect(&settings, &AppSettings::changed, [&] {
                ++notifications;
                wasStored = (settings.*read)() == value;
            });
            (settings.*write)(value);
            QObject::disconnect(connection);
            if (notifications != 1 || !wasStored)
                return false;
        }
        return true;
    };
    const QList<QString> texts{QStringLiteral("/a"), QString(), QStringLiteral("/b")};
    const QList<bool> truths{false, true, true};
    using S = AppSettings;
    QVERIFY(check(&S::setStorageDirectory, &S::storageDirectory, texts));
    QVERIFY(check(&S::setOpenAIAPIKey, &S::openAIAPIKey, texts));
    QVERIFY(check(&S::setAutoTranscribe, &S::autoTranscribe, truths));
    QVERIFY(check(&S::setAutoSummarize, &S::autoSummarize, truths));
    QVERIFY(check(&S::setHasCompletedSetup, &S::hasCompletedSetup, truths));
    QVERIFY(check(&S::setAppLanguage, &S::appLanguage, allAppLanguages()));
    QVERIFY(check(&S::setAudioSource, &S::audioSource, allAudioSources()));
    QVERIFY(check(&S::setTranscriptionLanguage, &S::transcriptionLanguage, allTranscriptionLanguages()));
}

void AppSettingsTest::theAudioFolderNotifiesOnlyWhenTheDefaultIsStored()
{
    AppSettings &settings = AppSettings::shared();
    settings.setStorageDirectory(QString());
    QSignalSpy spy(&settings, &AppSettings::changed);
    static_cast<void>(settings.audioDirectory());
    QCOMPARE(spy.count(), 1);
    static_cast<void>(settings.audioDirectory());
    static_cast<void>(settings.storageURL());
    QCOMPARE(spy.count(), 1);
}

void AppSettingsTest::otherThreadsReadWhileTheMainThreadWrites()
{
    AppSettings &settings = AppSettings::shared();
    std::atomic<bool> goOn = true;
    std::atomic<int> wrong = 0;
    std::atomic<int> readings = 0;
    settings.setStorageDirectory(QStringLiteral("/one"));
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i)
        readers.emplace_back([&] {
            while (goOn) {
                const QString text = L10n::settings();
                if (text != u"Settings" && text != u"Einstellungen")
                    ++wrong;
                const QString folder = settings.storageDirectory();
                if (folder != u"/one" && folder != u"/another")
                    ++wrong;
                ++readings;
            }
        });
    for (int i = 0; i < 50 || readings < 1000; ++i) {
        settings.setAppLanguage(i % 2 == 0 ? AppLanguage::german : AppLanguage::english);
        settings.setStorageDirectory(i % 2 == 0 ? QStringLiteral("/one") : QStringLiteral("/another"));
    }
    goOn = false;
    for (std::thread &reader : readers)
        reader.join();
    QCOMPARE(wrong.load(), 0);
}

} // namespace talvenor

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--child")
        return talvenor::childMain(arguments.mid(2));
    talvenor::AppSettingsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "AppSettingsTest.moc"
