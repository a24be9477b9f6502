#pragma once

#include "foundation/LocalizedError.h"
#include "platform/Platform.h"

#include <QStringList>

#include <algorithm>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace talvenor::test {

/// Notes what was called, in order, by any thread.
class Journal
{
public:
    void note(const QString &call)
    {
        const std::lock_guard guard(m_lock);
        m_calls.push_back(call);
    }
    [[nodiscard]] QStringList calls() const
    {
        const std::lock_guard guard(m_lock);
        return {m_calls.begin(), m_calls.end()};
    }
    [[nodiscard]] qsizetype count(const QString &call) const
    {
        const std::lock_guard guard(m_lock);
        return std::count(m_calls.begin(), m_calls.end(), call);
    }
    void clear()
    {
        const std::lock_guard guard(m_lock);
        m_calls.clear();
    }

private:
    mutable std::mutex m_lock;
    std::vector<QString> m_calls; ///< guarded by m_lock
};

/// A failure of the platform with the text given, to be set as an error below.
inline std::exception_ptr platformFailure(const QString &text)
{
    return std::make_exception_ptr(PlatformError(QStringLiteral("fake"), 1, text));
}

/// How a fake microphone behaves, and what was done to it.
struct FakeEngineState
{
    AudioFormat inputFormat{48'000, 1};
    std::optional<OneShot<void>> inputFormatGate; ///< `inputFormat` answers once this is settled
    std::optional<OneShot<void>> startGate;       ///< `start` answers once this is settled
    std::exception_ptr startError;                ///< what `start` throws
    std::uint32_t tapBufferSize = 0;
    AudioFormat tapFormat;
    AudioEngine::Tap tap; ///< call it to deliver a block; empty while there is none
};

/// Writes "engine.…" lines to the journal.
class FakeAudioEngine final : public AudioEngine
{
public:
    FakeAudioEngine(std::shared_ptr<FakeEngineState> state, std::shared_ptr<Journal> journal)
        : m_state(std::move(state)), m_journal(std::move(journal))
    {
        m_journal->note(QStringLiteral("engine.create"));
    }
    ~FakeAudioEngine() override
    {
        m_state->tap = nullptr;
        m_journal->note(QStringLiteral("engine.destroy"));
    }

    Task<AudioFormat> inputFormat() override
    {
        const auto state = m_state;
        m_journal->note(QStringLiteral("engine.inputFormat"));
        if (state->inputFormatGate)
            co_await *state->inputFormatGate;
        co_return state->inputFormat;
    }
    void installTap(std::uint32_t bufferSize, const AudioFormat &format, Tap tap) override
    {
        m_journal->note(QStringLiteral("engine.installTap"));
        m_state->tapBufferSize = bufferSize;
        m_state->tapFormat = format;
        m_state->tap = std::move(tap);
    }
    void endIntake() override { m_journal->note(QStringLiteral("engine.endIntake")); }
    void removeTap() override
    {
        m_journal->note(QStringLiteral("engine.removeTap"));
        m_state->tap = nullptr;
    }
    void prepare() override { m_journal->note(QStringLiteral("engine.prepare")); }
    Task<> start() override
    {
        const auto state = m_state;
        m_journal->note(QStringLiteral("engine.start"));
        if (state->startGate)
            co_await *state->startGate;
        if (state->startError)
            std::rethrow_exception(state->startError);
    }
    void stop() override { m_journal->note(QStringLiteral("engine.stop")); }

private:
    std::shared_ptr<FakeEngineState> m_state;
    std::shared_ptr<Journal> m_journal;
};

/// How a fake stream of system audio behaves, and what was done to it.
struct FakeStreamState
{
    ShareableDisplay display;
    SystemAudioConfiguration configuration;
    std::exception_ptr addError;               ///< what `addStreamOutput` throws
    std::exception_ptr startError;             ///< what `startCapture` throws
    std::exception_ptr stopError;              ///< what `stopCapture` throws
    std::optional<OneShot<void>> startGate;    ///< `startCapture` answers once this is settled
    std::shared_ptr<SystemAudioOutput> output; ///< call it to deliver; null once the stream is gone
};

/// Writes "stream.…" lines to the journal.
class FakeSystemAudioStream final : public SystemAudioStream
{
public:
    FakeSystemAudioStream(std::shared_ptr<FakeStreamState> state, std::shared_ptr<Journal> journal)
        : m_state(std::move(state)), m_journal(std::move(journal))
    {
        m_journal->note(QStringLiteral("stream.create"));
    }
    ~FakeSystemAudioStream() override
    {
        m_state->output = nullptr;
        m_journal->note(QStringLiteral("stream.destroy"));
    }

    void addStreamOutput(std::shared_ptr<SystemAudioOutput> output, StreamOutputType type) override
    {
        m_journal->note(type == StreamOutputType::audio ? QStringLiteral("stream.addStreamOutput audio")
                                                        : QStringLiteral("stream.addStreamOutput screen"));
        if (m_state->addError)
            std::rethrow_exception(m_state->addError);
        m_state->output = std::move(output);
    }
    Task<> startCapture() override
    {
        const auto state = m_state;
        m_journal->note(QStringLiteral("stream.startCapture"));
        if (state->startGate)
            co_await *state->startGate;
        if (state->startError)
            std::rethrow_exception(state->startError);
    }
    Task<> stopCapture() override
    {
        m_journal->note(QStringLiteral("stream.stopCapture"));
        if (m_state->stopError)
            std::rethrow_exception(m_state->stopError);
        co_return;
    }

private:
    std::shared_ptr<FakeStreamState> m_state;
    std::shared_ptr<Journal> m_journal;
};

/// How a fake audio file behaves, and what was written to it. Read it while nothing writes.
struct FakeFileState
{
    QString path;
    AudioFileSettings settings;
    std::exception_ptr writeError;     ///< what `write` throws
    std::function<void()> beforeWrite; ///< called first by `write`, which may have to wait there
    std::vector<float> samples;        ///< of the first channel
    std::thread::id finishedOn;        ///< the thread of the end of the file
};

/// Writes "file.…" lines to the journal, but none for each write.
class FakeAudioFile final : public AudioFile
{
public:
    FakeAudioFile(std::shared_ptr<FakeFileState> state, std::shared_ptr<Journal> journal)
        : m_state(std::move(state)), m_journal(std::move(journal))
    {
    }
    ~FakeAudioFile() override
    {
        m_state->finishedOn = std::this_thread::get_id();
        m_journal->note(QStringLiteral("file.finish"));
    }

    void write(const PcmBuffer &buffer) override
    {
        if (m_state->beforeWrite)
            m_state->beforeWrite();
        if (m_state->writeError)
            std::rethrow_exception(m_state->writeError);
        const float *samples = buffer.floatChannelData()[0];
        m_state->samples.insert(m_state->samples.end(), samples, samples + buffer.frameLength());
    }

private:
    std::shared_ptr<FakeFileState> m_state;
    std::shared_ptr<Journal> m_journal;
};

/// Answers what it is told to; keeps the answer functions of requests, to be called by the test.
class FakeAuthorization final : public Authorization
{
public:
    AuthorizationStatus microphone = AuthorizationStatus::authorized;
    AuthorizationStatus speech = AuthorizationStatus::authorized;
    std::function<void(bool)> microphoneAnswer;            ///< set by a request
    std::function<void(AuthorizationStatus)> speechAnswer; ///< set by a request

    [[nodiscard]] AuthorizationStatus microphoneStatus() override { return microphone; }
    void requestMicrophoneAccess(std::function<void(bool granted)> answer) override
    {
        microphoneAnswer = std::move(answer);
    }
    [[nodiscard]] AuthorizationStatus speechStatus() override { return speech; }
    void requestSpeechAuthorization(std::function<void(AuthorizationStatus)> answer) override
    {
        speechAnswer = std::move(answer);
    }
};

/// Puts fakes of all audio seams into the shared platform while it lives, and what was there back afterwards.
///
/// `nextEngine`, `nextStream` and `nextFile` are what the next object of that kind is made from; each is
/// replaced by a fresh one then, and the one in use moves to the end of `engines`, `streams` or `files`.
class FakeAudio
{
public:
    std::shared_ptr<Journal> journal = std::make_shared<Journal>();

    std::shared_ptr<FakeEngineState> nextEngine = std::make_shared<FakeEngineState>();
    std::shared_ptr<FakeStreamState> nextStream = std::make_shared<FakeStreamState>();
    std::shared_ptr<FakeFileState> nextFile = std::make_shared<FakeFileState>();
    std::vector<std::shared_ptr<FakeEngineState>> engines;
    std::vector<std::shared_ptr<FakeStreamState>> streams;
    std::vector<std::shared_ptr<FakeFileState>> files;

    std::exception_ptr createFileError;       ///< what `createAudioFile` throws
    std::optional<OneShot<void>> contentGate; ///< the next `shareableContent` answers after this
    std::exception_ptr contentError;          ///< what `shareableContent` throws
    QList<ShareableDisplay> displays{{QStringLiteral("first")}, {QStringLiteral("second")}};
    std::shared_ptr<FakeAuthorization> authorization = std::make_shared<FakeAuthorization>();

    FakeAudio() : m_before(Platform::shared())
    {
        Platform &platform = Platform::shared();
        platform.createAudioEngine = [this] {
            engines.push_back(std::exchange(nextEngine, std::make_shared<FakeEngineState>()));
            return std::make_unique<FakeAudioEngine>(engines.back(), journal);
        };
        platform.createAudioFile = [this](const QString &path, const AudioFileSettings &settings) {
            journal->note(QStringLiteral("file.create"));
            if (createFileError)
                std::rethrow_exception(createFileError);
            files.push_back(std::exchange(nextFile, std::make_shared<FakeFileState>()));
            files.back()->path = path;
            files.back()->settings = settings;
            return std::make_unique<FakeAudioFile>(files.back(), journal);
        };
        platform.shareableContent = [this] { return content(); };
        platform.createSystemAudioStream = [this](const ShareableDisplay &display,
                                                  const SystemAudioConfiguration &configuration) {
            streams.push_back(std::exchange(nextStream, std::make_shared<FakeStreamState>()));
            streams.back()->display = display;
            streams.back()->configuration = configuration;
            return std::make_shared<FakeSystemAudioStream>(streams.back(), journal);
        };
        platform.authorization = authorization;
    }
    ~FakeAudio() { Platform::shared() = m_before; }
    FakeAudio(const FakeAudio &) = delete;
    FakeAudio &operator=(const FakeAudio &) = delete;

    /// A mono block of floats with these samples.
    [[nodiscard]] static PcmBuffer block(const std::vector<float> &samples, double sampleRate = 48'000)
    {
        PcmBuffer buffer({sampleRate, 1}, std::uint32_t(samples.size()));
        std::copy(samples.begin(), samples.end(), buffer.floatChannelData()[0]);
        return buffer;
    }

private:
    Task<ShareableContent> content()
    {
        journal->note(QStringLiteral("content"));
        if (const auto gate = std::exchange(contentGate, std::nullopt))
            co_await *gate;
        if (contentError)
            std::rethrow_exception(contentError);
        co_return ShareableContent{displays};
    }

    Platform m_before;
};

} // namespace talvenor::test
