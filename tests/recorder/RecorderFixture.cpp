#include "recorderfakes/RecorderFixture.h"

#include "foundation/LocalizedError.h"
#include "platform/Platform.h"
#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "store/StorageService.h"
#include "support/Await.h"

#include <QFile>
#include <QJsonDocument>

namespace talvenor::test {

namespace {

/// A microphone that is there or not and starts when it is told to.
class ScriptedEngine : public AudioEngine
{
public:
    explicit ScriptedEngine(RecorderFixture &fixture) : m_fixture(fixture) {}

    Task<AudioFormat> inputFormat() override
    {
        co_return m_fixture.hasMicrophone ? AudioFormat{48000, 1} : AudioFormat{};
    }
    void installTap(std::uint32_t, const AudioFormat &, Tap tap) override { m_fixture.tap = std::move(tap); }
    void endIntake() override {}
    void removeTap() override { m_fixture.tap = nullptr; }
    void prepare() override {}
    Task<> start() override
    {
        // Engines take their turns, and a promise is awaited once.
        if (m_fixture.microphoneGate && !m_fixture.microphoneGate->isSettled()) {
            const OneShot<void> gate = *m_fixture.microphoneGate;
            co_await gate;
        }
        if (!m_fixture.microphoneStarts)
            throw PlatformError(QStringLiteral("microphone"), 1, QStringLiteral("The microphone is in use."));
    }
    void stop() override {}

private:
    RecorderFixture &m_fixture;
};

/// Takes all sound and keeps nothing.
class NoFile : public AudioFile
{
public:
    NoFile(const QString &path, std::function<void()> whenFinished) : m_whenFinished(std::move(whenFinished))
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            throw PlatformError(QStringLiteral("file"), int(file.error()), file.errorString());
        file.write("sound");
    }
    ~NoFile() override
    {
        if (m_whenFinished)
            m_whenFinished();
    }
    Q_DISABLE_COPY_MOVE(NoFile)
    void write(const PcmBuffer &) override {}

private:
    std::function<void()> m_whenFinished;
};

} // namespace

RecorderFixture::RecorderFixture()
{
    Platform &platform = Platform::shared();
    platform.createAudioEngine = [this] {
        if (whenEngineIsMade)
            whenEngineIsMade();
        return std::make_unique<ScriptedEngine>(*this);
    };
    platform.createAudioFile = [this](const QString &path, const AudioFileSettings &) {
        return std::make_unique<NoFile>(path, whenFileIsFinished);
    };
    platform.shareableContent = []() -> Task<ShareableContent> { co_return ShareableContent(); };
    platform.createSpeechRecognizer = [this](const QString &locale) {
        return speech.createRecognizer(locale);
    };
    platform.authorization = authorization;
    platform.secretStore = secrets;
    platform.httpTransport = service;
    platform.filePanels = panels;

    AppSettings &settings = AppSettings::shared();
    settings.setStorageDirectory(folder.path());
    settings.setAppLanguage(AppLanguage::english);
    settings.setTranscriptionLanguage(TranscriptionLanguage::english);
    settings.setAutoTranscribe(false);
    settings.setAutoSummarize(false);
    AuthService::shared().logout();
    service->answer(QStringLiteral("POST /auth/record"), 200, {{QStringLiteral("ok"), true}});
}

RecorderFixture::~RecorderFixture()
{
    // Tasks that a test has left waiting must find no view model when they go on, and what is at work on the
    // pool still looks at the platform.
    viewModel.reset();
    service->releaseAll();
    for (qsizetype index = 0; index < speech.started(); ++index)
        speech.fail(index, 0, QStringLiteral("the test is over")); // those that have ended take no notice
    StorageService::shared().waitUntilSaved();
    do {
        generalPool().waitForDone();
        QCoreApplication::processEvents();
    } while (generalPool().activeThreadCount() > 0);
    Platform &platform = Platform::shared();
    platform.createAudioEngine = nullptr;
    platform.createSpeechRecognizer = nullptr;
}

RecorderViewModel &RecorderFixture::start()
{
    viewModel = std::make_unique<RecorderViewModel>();
    return *viewModel;
}

void RecorderFixture::signIn(const QJsonObject &overrides)
{
    QJsonObject profile{
        {QStringLiteral("id"), 1},
        {QStringLiteral("email"), QStringLiteral("anna@example.invalid")},
        {QStringLiteral("name"), QStringLiteral("Anna")},
        {QStringLiteral("role"), QStringLiteral("user")},
        {QStringLiteral("subscription_tier"), QStringLiteral("premium")},
        {QStringLiteral("recordings_count"), 0},
    };
    for (auto value = overrides.begin(); value != overrides.end(); ++value)
        profile[value.key()] = value.value();
    service->answer(QStringLiteral("GET /auth/me"), 200, profile);
    service->answer(QStringLiteral("POST /auth/login"), 200,
                    {{QStringLiteral("token"), QStringLiteral("t")}, {QStringLiteral("user"), profile}});
    await(AuthService::shared().login(QStringLiteral("anna@example.invalid"), QStringLiteral("secret")));
}

void RecorderFixture::signOut()
{
    AuthService::shared().logout();
}

QJsonArray RecorderFixture::savedList()
{
    StorageService::shared().waitUntilSaved();
    return listOnDisk();
}

QJsonArray RecorderFixture::listOnDisk() const
{
    QFile file(folder.path() + QStringLiteral("/recordings.json"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).array();
}

void RecorderFixture::writeList(const QList<Recording> &recordings)
{
    StorageService::shared().saveRecordings(recordings);
    StorageService::shared().waitUntilSaved();
}

void RecorderFixture::record(int seconds)
{
    viewModel->startRecording();
    QVERIFY(waitUntil([this] { return viewModel->isRecording(); }));
    QVERIFY(waitUntil([this, seconds] { return viewModel->recordingDuration() >= seconds; }));
    viewModel->stopRecording();
}

} // namespace talvenor::test
