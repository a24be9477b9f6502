#pragma once

namespace talvenor {

/// True if the user's system shows its texts in German. For the texts of PlatformErrors, which stand for the
/// system's own and so follow its language; the program's own texts follow its setting. Any thread.
[[nodiscard]] bool systemSpeaksGerman();

} // namespace talvenor
