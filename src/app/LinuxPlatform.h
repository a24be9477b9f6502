#pragma once

namespace talvenor {

/// Fills the platform of the process with the Linux implementations. Main thread, once, before anything asks
/// for it.
void installLinuxPlatform();

} // namespace talvenor
