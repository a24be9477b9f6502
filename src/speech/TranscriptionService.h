#pragma once

#include "foundation/Task.h"
#include "settings/SettingChoices.h"
#include "store/Recording.h"

#include <QLoggingCategory>
#include <QObject>

#include <memory>

namespace talvenor {

/// The channel of what happens to a transcription; words are counted in it and never written.
Q_DECLARE_LOGGING_CATEGORY(tLogger)

/// Turns the file of a finished recording into the lines of a transcript.
///
/// Made and used on the main thread, which stays free: whatever may block runs on the general pool. There is
/// no time limit and no way to cancel.
class TranscriptionService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isTranscribing READ isTranscribing NOTIFY isTranscribingChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)

public:
    explicit TranscriptionService(QObject *parent = nullptr);
    ~TranscriptionService() override;
    Q_DISABLE_COPY_MOVE(TranscriptionService)

    /// True while a recognition is under way, and until shortly after its result is there.
    [[nodiscard]] bool isTranscribing() const { return m_isTranscribing; }
    /// 0 from the start of a recognition, 1 from its end; nothing between, since no recogniser tells.
    [[nodiscard]] double progress() const { return m_progress; }

    /// Asks whether speech recognition may be used; true only for `authorized`. Never throws.
    Task<bool> requestAuthorization();

    /// Recognises the whole file at the path `audioURL` and gives its lines; throws TranscriptionError.
    ///
    /// A recording without speech gives one line that says so, in the language of the application. Goes on
    /// to the result if the service is destroyed meanwhile; the words are then not grouped.
    Task<QList<TranscriptSegment>> transcribe(QString audioURL, TranscriptionLanguage language);

Q_SIGNALS:
    void isTranscribingChanged();
    void progressChanged();

private:
    void setIsTranscribing(bool transcribing);
    void setProgress(double progress);

    bool m_isTranscribing = false;
    double m_progress = 0;
    std::shared_ptr<const std::monostate> m_alive; ///< expires with the service; read on other threads
};

} // namespace talvenor
