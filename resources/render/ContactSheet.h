#pragma once

#include <QImage>

namespace talvenor::render {

/// All symbols with their names, each at several font sizes and twice as sharp, then one in each weight and
/// in gradients: to be looked at after a drawing has changed.
[[nodiscard]] QImage contactSheet(bool isDark);

} // namespace talvenor::render
