#pragma once

#include "platform/Platform.h"

namespace talvenor {

/// Puts the Linux implementation of playback into `platform`. Main thread, after the application object has
/// been made and before other threads exist: it sets the process's number format.
void installLinuxPlayback(Platform &platform);

} // namespace talvenor
