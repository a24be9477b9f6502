#pragma once

#include "platform/linux/playback/PlaybackFile.h"

#include <functional>
#include <memory>

struct mpv_handle;

namespace talvenor {

/// One libmpv, set up to play one file as sound and to do nothing else: it reads no configuration, runs no
/// script, opens no window, no terminal, no network and no other file.
///
/// Made and destroyed on the main thread. Calls that wait for its answer must not be made, because it may be
/// waiting for a sound server itself: the asynchronous ones are for use.
class MpvInstance
{
public:
    /// The address by which `file` is loaded.
    static constexpr const char *kUrl = "recording://file";

    /// Starts libmpv, idle and paused; throws PlatformError if that fails. `wakeUp` is called on any thread
    /// when there are events to fetch; it must return at once.
    MpvInstance(std::shared_ptr<const PlaybackFile> file, std::function<void()> wakeUp);

    /// Ends it in the background. `wakeUp` is not called any more.
    ~MpvInstance();

    MpvInstance(const MpvInstance &) = delete;
    MpvInstance &operator=(const MpvInstance &) = delete;

    [[nodiscard]] mpv_handle *handle() const { return m_handle; }

private:
    void setUp();

    std::shared_ptr<const PlaybackFile> m_file;
    std::function<void()> m_wakeUp;
    mpv_handle *m_handle = nullptr;
};

} // namespace talvenor
