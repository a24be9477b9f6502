#pragma once

#include "platform/SystemAudioStream.h"

namespace talvenor {

/// The sound server's sinks as the places that can be listened to; throws PlatformError with the server's own
/// words when there is no server or it does not answer in time. Does not block its caller.
[[nodiscard]] Task<ShareableContent> shareableSinks();

} // namespace talvenor
