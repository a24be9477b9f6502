#pragma once

namespace talvenor {

/// Registers the types of the screens. They lie in a static library, of which a linker takes only what is
/// named.
///
/// Call it once, before an engine loads "qrc:/qt/qml/Talvenor/MainWindow.qml"; the engine needs "qrc:/qt/qml"
/// among its import paths.
void initializeScreens();

} // namespace talvenor
