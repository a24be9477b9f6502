#pragma once

#include "platform/AudioPlayer.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

namespace talvenor {

/// Plays one recording and tells where it is; each detail screen owns one.
///
/// A thin wrapper around an AudioPlayer of Platform::shared(), whose position it polls ten times a second
/// while it plays, and not at all otherwise. Main thread only; nothing here fails.
class AudioPlayerService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
    Q_PROPERTY(double currentTime READ currentTime NOTIFY currentTimeChanged)
    Q_PROPERTY(double duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(float playbackRate READ playbackRate NOTIFY playbackRateChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString formattedCurrentTime READ formattedCurrentTime NOTIFY currentTimeChanged)
    Q_PROPERTY(QString formattedDuration READ formattedDuration NOTIFY durationChanged)

public:
    explicit AudioPlayerService(QObject *parent = nullptr);
    ~AudioPlayerService() override;

    /// The service's view of the playback; at most a tenth of a second behind the end of the file.
    [[nodiscard]] bool isPlaying() const { return m_isPlaying; }
    /// The position in seconds.
    [[nodiscard]] double currentTime() const { return m_currentTime; }
    /// The length of the loaded file in seconds; 0 without one.
    [[nodiscard]] double duration() const { return m_duration; }
    /// The speed that the user has chosen; outlives the file.
    [[nodiscard]] float playbackRate() const { return m_playbackRate; }
    /// The share of the file that is behind the position, 0 without a file.
    [[nodiscard]] double progress() const;
    /// The position as "0:59" or "1:02:05", parts of seconds cut off.
    [[nodiscard]] QString formattedCurrentTime() const { return formatTime(m_currentTime); }
    /// The length in the same form.
    [[nodiscard]] QString formattedDuration() const { return formatTime(m_duration); }

    /// Loads the file at the local path `url` in place of an earlier one, at position 0. If that fails, all
    /// stays as it was and a line on standard output says why.
    ///
    /// `isPlaying` is left as it is: who loads while something plays stops first.
    Q_INVOKABLE void load(const QString &url);

    /// Plays on, at `playbackRate`; nothing without a file.
    Q_INVOKABLE void play();
    /// Stays where it is; nothing without a file.
    Q_INVOKABLE void pause();
    /// The one of the two that changes something.
    Q_INVOKABLE void togglePlayPause();
    /// Ends playback and lets go of the file.
    Q_INVOKABLE void stop();

    /// Goes to `seconds`, limited to the file. Whether it plays stays as it is.
    Q_INVOKABLE void seek(double seconds);
    /// Goes forward by so many seconds, or back by a negative number.
    Q_INVOKABLE void skip(double seconds);

    /// Chooses the speed, with effect at once. A file that has just been loaded plays at speed 1 until this
    /// is called.
    Q_INVOKABLE void setRate(float rate);

Q_SIGNALS:
    void isPlayingChanged();
    void currentTimeChanged();
    void durationChanged();
    void playbackRateChanged();
    void progressChanged();

private:
    void startTimer();
    void stopTimer();
    void pollPlayer();

    void setIsPlaying(bool isPlaying);
    void setCurrentTime(double seconds);
    void setDuration(double seconds);
    void setPlaybackRate(float rate);
    [[nodiscard]] static QString formatTime(double seconds);

    bool m_isPlaying = false;
    double m_currentTime = 0;
    double m_duration = 0;
    float m_playbackRate = 1;
    std::unique_ptr<AudioPlayer> m_player; ///< null without a file
    std::unique_ptr<QTimer> m_timer;       ///< only while playing
};

} // namespace talvenor
