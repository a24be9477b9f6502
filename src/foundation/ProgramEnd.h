#pragma once

namespace talvenor {

/// Makes sure that the end of the program will be noticed. On the main thread, before the first work that
/// asks for it.
void watchForProgramEnd();

/// True once the program is ending: its application object, or its static objects, are being destroyed. Work
/// on the general pool has to stop then, because the pool waits for it. Any thread.
[[nodiscard]] bool isProgramEnding();

} // namespace talvenor
