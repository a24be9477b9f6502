#pragma once

#include <QByteArray>

namespace talvenor {

/// The drawing of a symbol with its upright and level lines moved onto the pixels of a small picture, where a
/// line between two pixels would be a grey smear. Widths come halfway to whole
/// pixels; what lies between lines moves along.
///
/// As in the hinting of typefaces, lines keep their distances from the middle as well as whole pixels allow,
/// and lines an equal distance apart stay so.
///
/// The drawing is SVG with paths of the absolute commands M, L, H, V, C, A and Z, circles and rectangles;
/// `pixelsPerUnit` is the scale of the picture. Throws nothing: other content comes back as it is.
[[nodiscard]] QByteArray fittedToPixels(const QByteArray &drawing, double pixelsPerUnit);

} // namespace talvenor
