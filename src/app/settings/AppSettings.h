#pragma once

#include "settings/AppLanguage.h"
#include "settings/SettingChoices.h"

#include <QObject>
#include <QString>

#include <memory>
#include <mutex>

class QSettings;

namespace talvenor {

/// The one store of the user's choices: eight values in the preferences file, and the two folders that
/// follow from them.
///
/// Each value is read from the store at each access. A value that was never written reads as its default,
/// which is not written back. Writing stores first and then sends `changed`. Written on the main thread; any
/// thread may read, since texts are asked for everywhere.
class AppSettings : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString storageDirectory READ storageDirectory WRITE setStorageDirectory NOTIFY changed)
    Q_PROPERTY(QString appLanguage READ appLanguageForm WRITE setAppLanguageForm NOTIFY changed)
    Q_PROPERTY(bool autoTranscribe READ autoTranscribe WRITE setAutoTranscribe NOTIFY changed)
    Q_PROPERTY(bool autoSummarize READ autoSummarize WRITE setAutoSummarize NOTIFY changed)
    Q_PROPERTY(bool hasCompletedSetup READ hasCompletedSetup WRITE setHasCompletedSetup NOTIFY changed)

public:
    /// The instance of the process, made on first use on the file that `XDG_CONFIG_HOME` names.
    [[nodiscard]] static AppSettings &shared();

    /// The folder that the user has chosen, as a path; empty while there is none.
    [[nodiscard]] QString storageDirectory() const;
    void setStorageDirectory(const QString &path);

    /// Stored, but nothing reads it: summaries go through the hosted service.
    [[nodiscard]] QString openAIAPIKey() const;
    void setOpenAIAPIKey(const QString &key);

    [[nodiscard]] bool autoTranscribe() const;
    void setAutoTranscribe(bool on);
    [[nodiscard]] bool autoSummarize() const;
    void setAutoSummarize(bool on);
    [[nodiscard]] bool hasCompletedSetup() const;
    void setHasCompletedSetup(bool completed);

    /// The language of all text; English if the stored string is unknown.
    [[nodiscard]] AppLanguage appLanguage() const;
    void setAppLanguage(AppLanguage language);
    /// The user's wish what to record; system audio if the stored string is unknown.
    [[nodiscard]] AudioSource audioSource() const;
    void setAudioSource(AudioSource source);
    /// The language that is spoken; German if the stored string is unknown.
    [[nodiscard]] TranscriptionLanguage transcriptionLanguage() const;
    void setTranscriptionLanguage(TranscriptionLanguage language);

    /// The folder of `recordings.json`. A chosen folder is given as it is, neither tested nor created.
    /// Without one, the folder "Talvenor" among the user's documents is created and becomes the stored
    /// choice.
    [[nodiscard]] QString storageURL();

    /// The folder of the audio files, created at each reading with whatever is missing above it.
    [[nodiscard]] QString audioDirectory();

Q_SIGNALS:
    /// A value has been written.
    void changed();

private:
    explicit AppSettings(const QString &filePath);
    ~AppSettings() override;
    Q_DISABLE_COPY_MOVE(AppSettings)

    [[nodiscard]] QString appLanguageForm() const { return stringForm(appLanguage()); }
    void setAppLanguageForm(const QString &form);
    [[nodiscard]] QVariant value(const char *key, const QVariant &fallback) const;
    void setValue(const char *key, const QVariant &value);

    mutable std::mutex m_lock; ///< guards m_store, which is not thread-safe by itself
    std::unique_ptr<QSettings> m_store;
};

} // namespace talvenor
