#pragma once

#include "platform/AudioPlayer.h"
#include "platform/linux/playback/MpvInstance.h"
#include "platform/linux/playback/PlaybackFile.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>

struct mpv_event;
struct mpv_event_end_file;
struct mpv_event_property;

namespace talvenor {

/// An AudioPlayer over libmpv and the server of libpulse.
///
/// It tells libmpv what to do and does not wait for it; what libmpv reports comes to the main thread's event
/// loop. The output is open from the first `play` until `stop`, the end of this object, or its loss.
class MpvAudioPlayer final : public AudioPlayer
{
public:
    /// Opens the file at `path`; throws PlatformError if it holds no sound.
    explicit MpvAudioPlayer(const QString &path);
    ~MpvAudioPlayer() override;

    [[nodiscard]] double duration() const override { return m_file->duration(); }
    [[nodiscard]] double currentTime() const override;
    void setCurrentTime(double seconds) override;
    void setRate(float rate) override;
    void setEnableRate(bool isEnabled) override;
    [[nodiscard]] bool isPlaying() const override { return m_isPlaying; }
    void prepareToPlay() override;
    void play() override;
    void pause() override;
    void stop() override;

private:
    /// What libmpv makes of the file.
    enum class Stage { absent, present };

    void load();
    void seek(double seconds);
    [[nodiscard]] double speed() const;
    [[nodiscard]] double secondsSinceTold() const;
    void applySpeed();
    void setPaused(bool isPaused);
    void send(int result, const char *what);

    void handleEvents();
    void handle(const mpv_event &event);
    void propertyChanged(const mpv_event_property &property);
    void positionTold(double seconds);
    void endTold(const mpv_event_end_file &end);
    void settled(bool isAtEnd);
    void endReached();
    void stopFading();
    void finish();

    const std::shared_ptr<const PlaybackFile> m_file;
    QObject m_context; ///< what libmpv's threads hand over ends with it
    std::atomic<bool> m_isWakePending{false};
    std::unique_ptr<MpvInstance> m_mpv; ///< null until it is needed

    Stage m_stage = Stage::absent;
    bool m_isSettling = false;        ///< a load or a seek is under way, and positions told are old ones
    std::optional<double> m_nextSeek; ///< the newest target that has been named meanwhile
    double m_position = 0;            ///< the last one told, or the target while settling
    QElapsedTimer m_sinceTold;        ///< the age of `m_position`
    bool m_isFadingAway = false;      ///< libmpv has come to the end of the file, its sound has not
    QTimer m_fadingAway;              ///< runs meanwhile
    QTimer m_runningOut;              ///< runs from the end of the sound until the output is paused
    bool m_isPlaying = false;
    bool m_isAtEnd = false;
    float m_rate = 1;
    bool m_isRateEnabled = false;
};

} // namespace talvenor
