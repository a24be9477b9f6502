#pragma once

namespace talvenor {

/// Plays one audio file to the default output.
///
/// Made, used and destroyed on the main thread. Making one reads the file's index, which takes a few
/// milliseconds, or a tenth of a second for hours that are still being recorded; no other call holds the
/// thread up, whatever the sound server does. The file that it was made for is the file that it plays,
/// whatever becomes of the name meanwhile. Destroying a player silences it.
class AudioPlayer
{
public:
    AudioPlayer() = default;
    AudioPlayer(const AudioPlayer &) = delete;
    AudioPlayer &operator=(const AudioPlayer &) = delete;
    virtual ~AudioPlayer() = default;

    /// The length of the file in seconds, as it was when the player was made; at least 0.
    [[nodiscard]] virtual double duration() const = 0;

    /// What is heard at this moment, in seconds from the beginning of the file, from 0 to `duration`. After
    /// the end of the file it stays there.
    [[nodiscard]] virtual double currentTime() const = 0;

    /// Goes to the sample at `seconds`, limited to the file; playback goes on there if it runs.
    virtual void setCurrentTime(double seconds) = 0;

    /// The speed, from 0.5 to 2, at which the pitch stays as it is. Without effect until it is enabled.
    virtual void setRate(float rate) = 0;

    /// Whether `setRate` counts; until then the speed is 1.
    virtual void setEnableRate(bool isEnabled) = 0;

    /// True from `play` until `pause`, `stop`, the end of the file, or the loss of the output.
    [[nodiscard]] virtual bool isPlaying() const = 0;

    /// Does what takes time at the first `play`.
    virtual void prepareToPlay() = 0;

    /// Plays from the current time on, or from the beginning if that is the end. An output that cannot be
    /// opened ends playback; each call tries again.
    virtual void play() = 0;

    /// Falls silent and stays at the current time.
    virtual void pause() = 0;

    /// Falls silent and lets go of the output.
    virtual void stop() = 0;
};

} // namespace talvenor
