#pragma once

namespace talvenor {

/// Mends what Qt Quick's accessibility tree leaves out: that an item is disabled, and that a field's text can
/// be set. Once, after the QML engine has been made and before a window is shown: factories installed later
/// are asked first. Main thread.
void installAccessibility();

} // namespace talvenor
