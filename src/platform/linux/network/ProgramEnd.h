#pragma once

#include <functional>

namespace talvenor {

/// True once the program is ending: its application object, or its static objects, are being destroyed. Work
/// on the general pool has to stop then, because the pool waits for it. Any thread.
[[nodiscard]] bool isProgramEnding();

/// Makes sure that the end will be noticed. Before the first work that asks for it.
void watchForProgramEnd();

/// Has `callback` called when the program is ending, once, on the main thread, before the general pool waits
/// for its threads. Implies
/// `watchForProgramEnd`.
void callAtProgramEnd(std::function<void()> callback);

} // namespace talvenor
