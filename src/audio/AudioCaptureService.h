#pragma once

#include "audio/AudioFileWriter.h"
#include "audio/AudioRingBuffer.h"
#include "audio/LevelMeter.h"
#include "audio/SystemAudioHandler.h"
#include "foundation/Task.h"
#include "platform/AudioEngine.h"
#include "platform/SystemAudioStream.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

namespace talvenor {

/// Records one meeting at a time into one AAC file: the microphone, with what the computer plays mixed in.
///
/// The two sources are joined purely by order of arrival; system audio is always tried and always optional.
/// Everything here belongs to the main thread, which it never blocks: what waits for a device or a disk runs
/// on other threads. Devices and files come from Platform::shared().
class AudioCaptureService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
    Q_PROPERTY(float audioLevel READ audioLevel NOTIFY audioLevelChanged)
    Q_PROPERTY(QList<float> audioLevels READ audioLevels NOTIFY audioLevelsChanged)
    Q_PROPERTY(bool hasSystemAudio READ hasSystemAudio NOTIFY hasSystemAudioChanged)

public:
    /// The length of the level history: 2.5 seconds.
    static constexpr qsizetype maxLevelSamples = 50;

    explicit AudioCaptureService(QObject *parent = nullptr);
    /// Ends a recording that is running or being started; its file is finished. No thread of the capture is
    /// left behind, even if the event loop never runs again.
    ~AudioCaptureService() override;

    /// True from the moment the microphone has started until the stop.
    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    /// The newest level, 0...1; 0 while nothing is recorded.
    [[nodiscard]] float audioLevel() const { return m_audioLevel; }
    /// The history of levels, oldest first, at most `maxLevelSamples`.
    [[nodiscard]] QList<float> audioLevels() const { return m_audioLevels; }
    /// True from the successful start of system audio until the stop, whatever becomes of it meanwhile.
    [[nodiscard]] bool hasSystemAudio() const { return m_hasSystemAudio; }

    /// Starts to record to a new file at the local path `url`, replacing what is there.
    ///
    /// Returns when system audio has started or been given up; the microphone has long been recording by
    /// then. Throws AudioCaptureError::noAudioInput without a microphone, and what the system says if the
    /// file cannot be created or the device not be started; nothing is undone then. Several starts take their
    /// turns. A stop while the microphone is being set up ends that set-up, without an error.
    Task<> startRecording(QString url);

    /// Ends the recording and gives its path, or that of the last one if nothing is running. System audio
    /// that has not been mixed yet is dropped. The file is finished in the background; see `finished`.
    std::optional<QString> stopRecording();

    /// Returns when the file of every recording that has been stopped so far holds all of its sound. A disk
    /// that does not answer keeps it waiting. A start waits for this by itself.
    Task<> finished();

Q_SIGNALS:
    void isRecordingChanged();
    void audioLevelChanged();
    void audioLevelsChanged();
    void hasSystemAudioChanged();

private:
    Task<std::optional<double>> startMicrophone(QString url);
    Task<> startSystemAudio(double micSampleRate);
    void startLevelTimer();
    void takeLevel();

    void setIsRecording(bool isRecording);
    void setAudioLevel(float level);
    void setAudioLevels(QList<float> levels);
    void setHasSystemAudio(bool hasSystemAudio);

    bool m_isRecording = false;
    float m_audioLevel = 0;
    QList<float> m_audioLevels;
    bool m_hasSystemAudio = false;
    std::shared_ptr<AudioEngine> m_engine; ///< shared with a set-up that waits for it
    std::shared_ptr<SystemAudioStream> m_scStream;
    /// Those that are being started, by coroutines which may never get to their end.
    std::vector<std::weak_ptr<SystemAudioStream>> m_startingStreams;
    std::shared_ptr<SystemAudioHandler> m_systemAudioHandler;
    std::optional<QString> m_recordingURL; ///< kept after the stop
    const std::shared_ptr<AudioFileWriter> m_writer = std::make_shared<AudioFileWriter>();
    const std::shared_ptr<LevelMeter> m_meter = std::make_shared<LevelMeter>();
    const std::shared_ptr<AudioRingBuffer> m_ringBuffer = std::make_shared<AudioRingBuffer>();
    std::unique_ptr<QTimer> m_levelTimer;
    OneShot<void> m_microphoneTurn; ///< settled when the newest set-up of the microphone has ended
    quint64 m_stopCount = 0;        ///< tells a set-up that it has been stopped while it waited
    QThreadPool m_finisher;         ///< of one thread, on which engines end and files are finished, in order
};

} // namespace talvenor
