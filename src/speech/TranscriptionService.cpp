#include "speech/TranscriptionService.h"

#include "platform/Platform.h"
#include "platform/UnifiedLog.h"
#include "speech/RecognitionHandler.h"
#include "speech/TranscriptionError.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QScopeGuard>

namespace talvenor {

Q_LOGGING_CATEGORY(tLogger, TALVENOR_LOG_SUBSYSTEM ".Transcription")

namespace {

const char *boolText(bool value)
{
    return value ? "true" : "false";
}

// May block: looking for models and reading a file's size both touch the disk.
std::unique_ptr<SpeechRecognizer> makeRecognizer(const QString &locale, const QString &audioURL)
{
    qCInfo(tLogger, "Transcribing locale=%s file=%s", qUtf8Printable(locale),
           qUtf8Printable(QFileInfo(QDir::cleanPath(audioURL)).fileName()));

    const auto &create = Platform::shared().createSpeechRecognizer;
    std::unique_ptr<SpeechRecognizer> recognizer = create ? create(locale) : nullptr;
    if (!recognizer) {
        qCCritical(tLogger, "Could not create recognizer for %s", qUtf8Printable(locale));
        throw TranscriptionError::recognizerUnavailable();
    }
    const bool available = recognizer->isAvailable();
    qCInfo(tLogger, "Recognizer available=%s onDevice=%s", boolText(available),
           boolText(recognizer->supportsOnDeviceRecognition()));
    if (!available) {
        qCCritical(tLogger, "Recognizer not available");
        throw TranscriptionError::recognizerUnavailable();
    }

    // A missing file is not the end: the recogniser tells the user why it cannot be read.
    const QFileInfo file(audioURL);
    if (file.exists())
        qCInfo(tLogger, "Audio file: %lld bytes", static_cast<long long>(file.size()));
    else
        qCCritical(tLogger, "Audio file NOT FOUND: %s", qUtf8Printable(audioURL));
    return recognizer;
}

// May block: a process is started.
void startRecognition(SpeechRecognizer &recognizer, const QString &audioURL,
                      const std::shared_ptr<RecognitionHandler> &handler)
{
    SpeechRequest request;
    request.path = audioURL;
    request.shouldReportPartialResults = true;
    request.addsPunctuation = true;
    request.taskHint = SpeechTaskHint::dictation;
    if (recognizer.supportsOnDeviceRecognition()) {
        request.requiresOnDeviceRecognition = true;
        qCInfo(tLogger, "Using on-device recognition");
    } else {
        qCInfo(tLogger, "Using server-based recognition");
    }
    const SpeechTaskState state =
        recognizer.recognitionTask(request, [handler](const SpeechResult *result, const SpeechError *error) {
            handler->handle(result, error);
        });
    qCInfo(tLogger, "Recognition task started, state=%d", static_cast<int>(state));
}

} // namespace

TranscriptionService::TranscriptionService(QObject *parent)
    : QObject(parent), m_alive(std::make_shared<const std::monostate>())
{
}

TranscriptionService::~TranscriptionService() = default;

void TranscriptionService::setIsTranscribing(bool transcribing)
{
    if (m_isTranscribing == transcribing)
        return;
    m_isTranscribing = transcribing;
    Q_EMIT isTranscribingChanged();
}

void TranscriptionService::setProgress(double progress)
{
    if (m_progress == progress)
        return;
    m_progress = progress;
    Q_EMIT progressChanged();
}

Task<bool> TranscriptionService::requestAuthorization()
{
    const std::shared_ptr<Authorization> authorization = Platform::shared().authorization;
    if (!authorization)
        co_return false;
    OneShot<AuthorizationStatus> answer;
    authorization->requestSpeechAuthorization(
        [answer](AuthorizationStatus status) { answer.resume(status); });
    co_return co_await answer == AuthorizationStatus::authorized;
}

Task<QList<TranscriptSegment>> TranscriptionService::transcribe(QString audioURL,
                                                                TranscriptionLanguage language)
{
    // The service may be gone after any wait.
    const QPointer<TranscriptionService> self(this);
    const std::weak_ptr<const std::monostate> alive = m_alive;
    const QString locale = stringForm(language);

    auto make = [locale, audioURL] { return makeRecognizer(locale, audioURL); };
    std::shared_ptr<SpeechRecognizer> recognizer = co_await onGeneralPool(std::move(make));

    if (self) {
        self->setIsTranscribing(true);
        self->setProgress(0);
    }
    const auto reset = qScopeGuard([self] {
        if (self.isNull())
            return;
        startTask(self, [self]() -> Task<> {
            self->setIsTranscribing(false);
            self->setProgress(1);
            co_return;
        });
    });

    const OneShot<QList<TranscriptSegment>> continuation;
    const auto handler = std::make_shared<RecognitionHandler>(continuation, alive);
    auto start = [recognizer = std::move(recognizer), audioURL, handler] {
        startRecognition(*recognizer, audioURL, handler);
    };
    co_await onGeneralPool(std::move(start));
    co_return co_await continuation;
}

} // namespace talvenor
