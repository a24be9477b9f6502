#pragma once

#include "foundation/Task.h"
#include "platform/AudioBuffer.h"

#include <functional>

namespace talvenor {

/// The microphone: one input node that can be listened to through one tap.
///
/// Made, prepared and started on the main thread, which only `removeTap`, `stop` and the end of the engine
/// hold up, for as long as the tap's own work takes; these may be called on another thread, once the main
/// thread is done with it. The tap runs on a thread of the engine's. An engine serves one recording and is
/// then destroyed, which stops it if that has not happened.
class AudioEngine
{
public:
    /// Gets each block of microphone sound; it may change the block in place. Never called again once
    /// `removeTap` has returned.
    using Tap = std::function<void(PcmBuffer &)>;

    AudioEngine() = default;
    AudioEngine(const AudioEngine &) = delete;
    AudioEngine &operator=(const AudioEngine &) = delete;
    virtual ~AudioEngine() = default;

    /// The hardware's own rate and channel count. With no microphone (none at all, nothing but monitors of
    /// outputs, or no sound server) the rate or the count is 0. Never fails.
    virtual Task<AudioFormat> inputFormat() = 0;

    /// Asks for blocks of about `bufferSize` frames in `format`: floats, mono, at the rate that
    /// `inputFormat` has told. The size is a wish; blocks of any size may come.
    virtual void installTap(std::uint32_t bufferSize, const AudioFormat &format, Tap tap) = 0;

    /// Closes the ear: what is said from now on never reaches the tap, while what has arrived still does. For
    /// good, and without waiting for anything.
    virtual void endIntake() = 0;

    /// Takes the tap away, once it has got what has arrived by now: a call that is under way is waited for,
    /// and the rest may be delivered on the calling thread. Without a tap nothing happens.
    virtual void removeTap() = 0;

    /// Makes ready what `start` would otherwise have to do first.
    virtual void prepare() = 0;

    /// Starts the flow of blocks; throws PlatformError if the device cannot be opened.
    ///
    /// From then on blocks come at the pace of the clock whatever becomes of the device: while it is gone
    /// they are silent, and the next real microphone is taken up by itself.
    virtual Task<> start() = 0;

    /// Stops the flow. Blocks that the device has delivered by now have reached the tap before, or are lost
    /// if there is none.
    virtual void stop() = 0;
};

} // namespace talvenor
