#include "audio/AudioCaptureService.h"

#include "audio/AudioCaptureError.h"
#include "audio/AudioLog.h"
#include "audio/MicrophoneTap.h"
#include "foundation/LocalizedError.h"
#include "foundation/ProgrammingError.h"
#include "foundation/ThreadPool.h"
#include "platform/Platform.h"

#include <QFileInfo>
#include <QPointer>
#include <QScopeGuard>

#include <chrono>
#include <cmath>
#include <utility>

namespace talvenor {

AudioCaptureService::AudioCaptureService(QObject *parent) : QObject(parent)
{
    static_cast<void>(m_microphoneTurn.resume()); // no set-up yet to wait for
    m_finisher.setMaxThreadCount(1);
    m_finisher.setObjectName(QStringLiteral("finishing of recordings"));
}

AudioCaptureService::~AudioCaptureService()
{
    ++m_stopCount;
    m_levelTimer.reset();
    if (m_engine)
        m_engine->endIntake();
    m_finisher.waitForDone();
    // A start that is under way holds the engine and the stream too, and may never go on: at the end of the
    // program no event loop runs any more. So both are stopped, not only let go.
    if (m_engine) {
        m_engine->removeTap();
        m_engine->stop();
        m_engine.reset();
    }
    m_writer->close();
    m_scStream.reset();
    for (const std::weak_ptr<SystemAudioStream> &starting : m_startingStreams) {
        // That nothing runs yet is no failure here.
        if (const std::shared_ptr<SystemAudioStream> stream = starting.lock())
            static_cast<void>(stream->stopCapture());
    }
}

Task<> AudioCaptureService::startRecording(QString url)
{
    const QPointer<AudioCaptureService> self(this);
    const std::optional<double> micSampleRate = co_await startMicrophone(std::move(url));
    if (!self || !micSampleRate)
        co_return;
    co_await startSystemAudio(*micSampleRate);
}

// The set-up of a microphone is one step to all others, though it waits three times: a second start takes its
// turn after it, and a stop takes back what it has done so far. Without a rate it has been stopped.
Task<std::optional<double>> AudioCaptureService::startMicrophone(QString url)
{
    const QPointer<AudioCaptureService> self(this);
    const auto isOver = [self, stopCount = m_stopCount] { return !self || self->m_stopCount != stopCount; };

    const OneShot<void> turn;
    const OneShot<void> previousTurn = std::exchange(m_microphoneTurn, turn);
    const auto endTurn = qScopeGuard([turn] { static_cast<void>(turn.resume()); }); // settled only here
    co_await previousTurn;
    if (isOver())
        co_return std::nullopt;
    co_await finished(); // nothing of an earlier recording may reach the file of this one
    if (isOver())
        co_return std::nullopt;

    m_recordingURL = url;
    m_ringBuffer->reset();
    setHasSystemAudio(false);
    const std::shared_ptr<AudioEngine> engine = Platform::shared().createAudioEngine();
    startOnPool(m_finisher, [previous = std::exchange(m_engine, engine), writer = m_writer]() mutable {
        previous.reset();
        writer->close(); // where a recording is replaced without a stop
    });
    co_await finished();
    if (isOver())
        co_return std::nullopt;
    const AudioFormat inputFormat = co_await engine->inputFormat();
    if (isOver())
        co_return std::nullopt;
    if (!(inputFormat.sampleRate > 0) || inputFormat.channelCount == 0)
        throw AudioCaptureError(AudioCaptureError::Case::noAudioInput);
    const double micSampleRate = inputFormat.sampleRate;
    qCInfo(logger, "Mic: %fHz %uch", micSampleRate, inputFormat.channelCount);
    if (!std::isfinite(micSampleRate))
        programmingError(QStringLiteral("the microphone's sample rate is not a number"));
    const AudioFormat monoFormat{.sampleRate = micSampleRate, .channelCount = 1};

    const AudioFileSettings settings{.formatID = kAudioFormatMPEG4AAC,
                                     .sampleRate = micSampleRate,
                                     .channelCount = 1,
                                     .encoderAudioQuality = AudioQuality::high};
    // Named, because GCC 12 destroys twice what a temporary lambda in a co_await has captured.
    auto create = [url, settings] { return Platform::shared().createAudioFile(url, settings); };
    std::unique_ptr<AudioFile> file = co_await onGeneralPool(std::move(create));
    if (isOver())
        co_return std::nullopt;
    m_writer->setFile(std::move(file));
    auto tap = std::make_shared<MicrophoneTap>(m_writer, m_meter, m_ringBuffer);
    engine->installTap(4096, monoFormat, [tap](PcmBuffer &buffer) { tap->process(buffer); });
    engine->prepare();
    try {
        co_await engine->start();
    } catch (...) {
        // An engine that was stopped while it started may say so; nobody wants to hear it.
        if (isOver())
            co_return std::nullopt;
        throw;
    }
    if (isOver())
        co_return std::nullopt;
    setIsRecording(true);
    qCInfo(logger, "Mic recording started");
    startLevelTimer();
    co_return micSampleRate;
}

Task<> AudioCaptureService::startSystemAudio(double micSampleRate)
{
    const QPointer<AudioCaptureService> self(this);
    QString failure;
    try {
        const ShareableContent content = co_await Platform::shared().shareableContent();
        if (!self)
            co_return;
        const SystemAudioConfiguration configuration{.capturesAudio = true,
                                                     .excludesCurrentProcessAudio = true,
                                                     .channelCount = 1,
                                                     .sampleRate = int(micSampleRate)};
        if (content.displays.isEmpty()) {
            qCCritical(logger, "No display found for system audio");
            co_return;
        }
        const auto handler = std::make_shared<SystemAudioHandler>(m_ringBuffer);
        m_systemAudioHandler = handler;
        const std::shared_ptr<SystemAudioStream> stream =
            Platform::shared().createSystemAudioStream(content.displays.first(), configuration);
        stream->addStreamOutput(handler, StreamOutputType::audio);
        std::erase_if(m_startingStreams, [](const auto &starting) { return starting.expired(); });
        m_startingStreams.push_back(stream);
        co_await stream->startCapture();
        if (!self)
            co_return;
        std::erase_if(m_startingStreams,
                      [&stream](const auto &starting) { return starting.lock() == stream; });
        // Nothing looks for a stop that has come meanwhile: the stream then runs until the next one takes its
        // place, into a ring buffer that nobody reads.
        m_scStream = stream;
        setHasSystemAudio(true);
        qCInfo(logger, "System audio capture started via ScreenCaptureKit");
        co_return;
    } catch (...) {
        failure = localizedDescription(std::current_exception());
    }
    if (!self)
        co_return; // a stream that was stopped while it started may say so; nobody wants to hear it
    qCCritical(logger, "System audio failed: %s — mic-only mode", qUtf8Printable(failure));
    setHasSystemAudio(false);
}

void AudioCaptureService::startLevelTimer()
{
    m_levelTimer = std::make_unique<QTimer>();
    m_levelTimer->setInterval(std::chrono::milliseconds(50));
    m_levelTimer->setTimerType(Qt::PreciseTimer);
    // Both the connection and the task end with the service.
    connect(m_levelTimer.get(), &QTimer::timeout, this, [this] {
        startTask(this, [this]() -> Task<> {
            takeLevel();
            co_return;
        });
    });
    m_levelTimer->start();
}

void AudioCaptureService::takeLevel()
{
    const float level = m_meter->level();
    setAudioLevel(level);
    QList<float> levels = m_audioLevels;
    levels.append(level);
    if (levels.size() > maxLevelSamples)
        levels.removeFirst();
    setAudioLevels(std::move(levels));
}

std::optional<QString> AudioCaptureService::stopRecording()
{
    ++m_stopCount;
    m_levelTimer.reset();
    if (m_scStream) {
        const std::shared_ptr<SystemAudioStream> stream = std::exchange(m_scStream, nullptr);
        m_systemAudioHandler.reset();
        startTask(this, [stream]() -> Task<> {
            try {
                co_await stream->stopCapture();
            } catch (...) {
                // What cannot be stopped ends with the last reference to it.
            }
        });
    }
    // Whoever has pressed stop is not heard any more, however long the disk keeps the rest waiting.
    if (m_engine)
        m_engine->endIntake();
    // What follows waits for a tap that may be caught in a write to a slow disk, and writes itself.
    startOnPool(m_finisher, [engine = std::exchange(m_engine, nullptr), writer = m_writer,
                             ringBuffer = m_ringBuffer, url = m_recordingURL]() mutable {
        // The tap is gone before the file is finished, so that no buffer reaches a closed writer.
        if (engine) {
            engine->removeTap();
            engine->stop();
            engine.reset();
        }
        writer->close();
        ringBuffer->reset();
        qCInfo(logger, "Stopped. Frames: %lld", static_cast<long long>(writer->totalFrames()));
        if (url) {
            const QFileInfo file(*url);
            if (file.exists())
                qCInfo(logger, "File: %lld bytes", static_cast<long long>(file.size()));
        }
    });
    setIsRecording(false);
    setAudioLevel(0);
    setAudioLevels({});
    setHasSystemAudio(false);
    return m_recordingURL;
}

Task<> AudioCaptureService::finished()
{
    // One thread takes one piece of work after the other, so this one comes after all that was begun before.
    const OneShot<void> done;
    startOnPool(m_finisher, [done] { static_cast<void>(done.resume()); }); // settled only here
    co_await done;
}

void AudioCaptureService::setIsRecording(bool isRecording)
{
    if (std::exchange(m_isRecording, isRecording) != isRecording)
        Q_EMIT isRecordingChanged();
}

void AudioCaptureService::setAudioLevel(float level)
{
    if (std::exchange(m_audioLevel, level) != level)
        Q_EMIT audioLevelChanged();
}

void AudioCaptureService::setAudioLevels(QList<float> levels)
{
    if (m_audioLevels == levels)
        return;
    m_audioLevels = std::move(levels);
    Q_EMIT audioLevelsChanged();
}

void AudioCaptureService::setHasSystemAudio(bool hasSystemAudio)
{
    if (std::exchange(m_hasSystemAudio, hasSystemAudio) != hasSystemAudio)
        Q_EMIT hasSystemAudioChanged();
}

} // namespace talvenor
