#pragma once

#include "platform/Platform.h"

namespace talvenor {

/// Fills the members of `platform` that this folder implements. Main thread, once, at start.
void installLinuxMedia(Platform &platform);

} // namespace talvenor
