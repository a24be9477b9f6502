#pragma once

#include <QString>

#include <optional>

namespace talvenor {

/// Where an MPEG-4 file that was cut off within a box would have to end so that its last box is whole; absent
/// if it is no such file, if it is whole, or if nothing but its head is. Boxes as in ISO/IEC 14496-12, 4.2.
/// Blocks.
[[nodiscard]] std::optional<qint64> endOfWholeBoxes(const QString &path);

} // namespace talvenor
