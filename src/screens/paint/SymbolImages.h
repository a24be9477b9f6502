#pragma once

#include <QByteArray>
#include <QCache>
#include <QColor>
#include <QHash>
#include <QImage>
#include <QString>
#include <QStringList>

namespace talvenor {

/// What one picture of a symbol looks like: the key under which it is kept.
struct SymbolLook
{
    QString name;               ///< the drawing's name, such as "waveform.slash"
    int box = 0;                ///< side of the square box, logical pixels; at most SymbolImages::largestBox
    qreal devicePixelRatio = 1; ///< device pixels in one logical pixel
    double strokeWeight = 1;    ///< factor on the drawing's line widths; 1 is regular
    QColor startColor;          ///< the tint, or the gradient's colour at the left or the upper left
    QColor endColor;            ///< the gradient's colour at the other end; invalid for a plain tint
    bool isDiagonal = false;    ///< the gradient runs from corner to corner, else from left to right
    int litLayer = 0;           ///< the only layer at full strength, counted from 1; 0 leaves all of them so

    friend bool operator==(const SymbolLook &, const SymbolLook &) = default;
};
[[nodiscard]] size_t qHash(const SymbolLook &look, size_t seed = 0) noexcept;

/// The symbols as pictures. Each symbol is one drawing, resources/symbols/NAME.svg, on a grid of 24 by 24.
///
/// In a drawing black is ink and white is cut out of the ink below it, so that lines inside a filled form
/// have a width that can be changed like any other. Elements named "layer1", "layer2" and so on can be lit
/// one at a time. A picture has the ink in the colours asked for on a clear ground.
///
/// Pictures are kept until others need their place. Main thread.
class SymbolImages
{
public:
    /// Larger boxes are drawn at this size: a bound on memory, far above any size in use.
    static constexpr int largestBox = 1024;

    /// Keeps at most so many bytes of pictures, and half as many of uncoloured ones.
    explicit SymbolImages(qsizetype capacity = 4 * 1024 * 1024);

    /// The pictures of the whole program.
    [[nodiscard]] static SymbolImages &shared();

    /// The names of all drawings, sorted.
    [[nodiscard]] static QStringList names();

    /// The side of a symbol's box beside text of that font size, both in logical pixels: the even number next
    /// to 1.25 times the size.
    ///
    /// A round symbol is then 1.1 times the font size across, half again as high as the capitals, and a bare
    /// sign such as a cross about as high as they are. Even, because a box then stands centred on whole
    /// pixels in buttons and circles, whose sides are even too.
    [[nodiscard]] static int boxForFontSize(qreal size);

    /// The picture, with its device pixel ratio set. A null image for an empty name, and for an unknown one,
    /// which is logged once.
    [[nodiscard]] QImage image(const SymbolLook &look);

    /// How many layers can be lit one after another; 0 if the drawing has none, or there is no such drawing.
    [[nodiscard]] int layerCount(const QString &name);

    /// Bytes of the pictures kept.
    [[nodiscard]] qsizetype cachedBytes() const;

private:
    struct Drawing
    {
        QByteArray text; ///< empty if there is no such drawing
        int layerCount = 0;
    };

    const Drawing &drawing(const QString &name);
    QImage mask(SymbolLook look);

    QHash<QString, Drawing> m_drawings;
    QCache<SymbolLook, QImage> m_masks;
    QCache<SymbolLook, QImage> m_images;
};

} // namespace talvenor
