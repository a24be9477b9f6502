#include "settings/AppSettings.h"

#include "foundation/ProgrammingError.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>

namespace talvenor {

namespace {

constexpr auto storageDirectoryKey = "storageDirectory";
constexpr auto openAIAPIKeyKey = "openAIAPIKey";
constexpr auto audioSourceKey = "audioSource";
constexpr auto transcriptionLanguageKey = "transcriptionLanguage";
constexpr auto appLanguageKey = "appLanguage";
constexpr auto autoTranscribeKey = "autoTranscribe";
constexpr auto autoSummarizeKey = "autoSummarize";
constexpr auto hasCompletedSetupKey = "hasCompletedSetup";

QString preferencesFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/talvenor/talvenor.conf");
}

} // namespace

AppSettings &AppSettings::shared()
{
    static AppSettings instance(preferencesFile());
    return instance;
}

AppSettings::AppSettings(const QString &filePath)
    : m_store(std::make_unique<QSettings>(filePath, QSettings::IniFormat))
{
}

AppSettings::~AppSettings() = default;

QVariant AppSettings::value(const char *key, const QVariant &fallback) const
{
    const std::lock_guard guard(m_lock);
    const QVariant stored = m_store->value(QString::fromLatin1(key), fallback);
    // A hand-edited file may hold a list or nothing at all where one plain value belongs.
    if (stored.typeId() == QMetaType::QString) {
        // A text of the caller's own: the store's is touched under the lock alone.
        const QString text = stored.toString();
        return QString(text.constData(), text.size());
    }
    return stored.typeId() == fallback.typeId() ? stored : fallback;
}

void AppSettings::setValue(const char *key, const QVariant &value)
{
    {
        const std::lock_guard guard(m_lock);
        m_store->setValue(QString::fromLatin1(key), value);
        // At once: the next thing to happen may be the end of the process.
        m_store->sync();
    }
    Q_EMIT changed();
}

QString AppSettings::storageDirectory() const
{
    return value(storageDirectoryKey, QString()).toString();
}

void AppSettings::setStorageDirectory(const QString &path)
{
    setValue(storageDirectoryKey, path);
}

QString AppSettings::openAIAPIKey() const
{
    return value(openAIAPIKeyKey, QString()).toString();
}

void AppSettings::setOpenAIAPIKey(const QString &key)
{
    setValue(openAIAPIKeyKey, key);
}

bool AppSettings::autoTranscribe() const
{
    return value(autoTranscribeKey, true).toBool();
}

void AppSettings::setAutoTranscribe(bool on)
{
    setValue(autoTranscribeKey, on);
}

bool AppSettings::autoSummarize() const
{
    return value(autoSummarizeKey, true).toBool();
}

void AppSettings::setAutoSummarize(bool on)
{
    setValue(autoSummarizeKey, on);
}

bool AppSettings::hasCompletedSetup() const
{
    return value(hasCompletedSetupKey, false).toBool();
}

void AppSettings::setHasCompletedSetup(bool completed)
{
    setValue(hasCompletedSetupKey, completed);
}

AppLanguage AppSettings::appLanguage() const
{
    return appLanguageFromString(value(appLanguageKey, QString()).toString()).value_or(AppLanguage::english);
}

void AppSettings::setAppLanguage(AppLanguage language)
{
    setValue(appLanguageKey, stringForm(language));
}

void AppSettings::setAppLanguageForm(const QString &form)
{
    if (const auto language = appLanguageFromString(form))
        setAppLanguage(*language);
}

AudioSource AppSettings::audioSource() const
{
    return audioSourceFromString(value(audioSourceKey, QString()).toString())
        .value_or(AudioSource::systemAudio);
}

void AppSettings::setAudioSource(AudioSource source)
{
    setValue(audioSourceKey, stringForm(source));
}

TranscriptionLanguage AppSettings::transcriptionLanguage() const
{
    return transcriptionLanguageFromString(value(transcriptionLanguageKey, QString()).toString())
        .value_or(TranscriptionLanguage::german);
}

void AppSettings::setTranscriptionLanguage(TranscriptionLanguage language)
{
    setValue(transcriptionLanguageKey, stringForm(language));
}

QString AppSettings::storageURL()
{
    const QString chosen = storageDirectory();
    if (!chosen.isEmpty())
        return chosen;
    const QStringList documents = QStandardPaths::standardLocations(QStandardPaths::DocumentsLocation);
    if (documents.isEmpty())
        programmingError(QStringLiteral("the system names no documents directory"));
    const QString folder = documents.first() + QStringLiteral("/Talvenor");
    // A failure shows itself at the first save; there is nothing better to do here.
    QDir().mkpath(folder);
    setStorageDirectory(folder);
    return folder;
}

QString AppSettings::audioDirectory()
{
    const QString folder = storageURL() + QStringLiteral("/Recordings");
    // As above; and the folder comes back if somebody has removed it.
    QDir().mkpath(folder);
    return folder;
}

} // namespace talvenor
