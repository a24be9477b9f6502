#include "screens/record/RecordBackdrop.h"

#include "screens/paint/Dither.h"

#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRectangleNode>

#include <array>
#include <cmath>

namespace talvenor {

namespace {

using Channels = std::array<float, 3>;

Channels channels(const QColor &color)
{
    return {color.redF(), color.greenF(), color.blueF()};
}

/// A glow around a place: full within the start radius, from there evenly down to nothing at the end radius.
struct Glow
{
    QPointF center;
    float startRadius;
    float endRadius;
    Channels color;
    float opacity;

    [[nodiscard]] float strengthAt(float x, float y) const
    {
        const float dx = x - static_cast<float>(center.x());
        const float dy = y - static_cast<float>(center.y());
        const float squared = dx * dx + dy * dy;
        if (squared >= endRadius * endRadius)
            return 0;
        return opacity * std::min(1.0F, (endRadius - std::sqrt(squared)) / (endRadius - startRadius));
    }

    [[nodiscard]] QRectF area() const
    {
        const double radius = endRadius;
        return QRectF(-radius, -radius, 2 * radius, 2 * radius).translated(center);
    }
};

/// One channel of the material over what lies below it, in overlay mode: a straight line for the darker half
/// of what is below and another one for the lighter half.
struct Overlay
{
    float darkSlope;
    float lightSlope;
    float lightOffset;

    Overlay(float material, float opacity)
        : darkSlope(1 - opacity + opacity * 2 * material),
          lightSlope(1 - opacity + opacity * 2 * (1 - material)),
          lightOffset(opacity * (1 - 2 * (1 - material)))
    {
    }

    [[nodiscard]] float over(float below) const
    {
        return below <= 0.5F ? below * darkSlope : below * lightSlope + lightOffset;
    }
};

/// Thresholds for a patch of points, computed once.
class Thresholds
{
public:
    Thresholds()
    {
        for (size_t y = 0; y < side; ++y) {
            for (size_t x = 0; x < side; ++x)
                m_values[y * side + x] = ditherThreshold(static_cast<int>(x), static_cast<int>(y));
        }
    }

    [[nodiscard]] float at(int x, int y) const
    {
        return m_values[static_cast<size_t>(y) % side * side + static_cast<size_t>(x) % side];
    }

private:
    static constexpr size_t side = 128;
    std::array<float, side * side> m_values{};
};

} // namespace

struct RecordBackdrop::Mixture
{
    Channels window;
    Glow first;
    Glow second;
    std::array<Overlay, 3> material;

    /// `threshold` decides about rounding up where a glow is, so that its few shades show no rings.
    [[nodiscard]] QRgb colorAt(float x, float y, float threshold = 0.5F) const
    {
        const float firstStrength = first.strengthAt(x, y);
        const float secondStrength = second.strengthAt(x, y);
        const float rounding = firstStrength > 0 || secondStrength > 0 ? threshold : 0.5F;
        std::array<int, 3> result{};
        for (size_t i = 0; i < result.size(); ++i) {
            float value = window[i] + (first.color[i] - window[i]) * firstStrength;
            value += (second.color[i] - value) * secondStrength;
            result[i] = static_cast<int>(material[i].over(value) * 255 + rounding);
        }
        return qRgb(result[0], result[1], result[2]);
    }
};

RecordBackdrop::RecordBackdrop(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    connect(this, &RecordBackdrop::changed, this, &RecordBackdrop::repaint);
}

void RecordBackdrop::repaint()
{
    m_isStale = true;
    update();
}

void RecordBackdrop::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        repaint();
}

void RecordBackdrop::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        repaint();
    QQuickItem::itemChange(change, value);
}

RecordBackdrop::Mixture RecordBackdrop::mixture() const
{
    const auto place = [this](double x, double y) { return QPointF(x * width(), y * height()); };
    return {channels(m_windowColor),
            {place(0.35, 0.38), 40, 360, channels(m_firstGlow), m_firstGlow.alphaF()},
            {place(0.68, 0.62), 30, 320, channels(m_secondGlow), m_secondGlow.alphaF()},
            {Overlay(m_material.redF(), m_material.alphaF()),
             Overlay(m_material.greenF(), m_material.alphaF()),
             Overlay(m_material.blueF(), m_material.alphaF())}};
}

QColor RecordBackdrop::colorAt(const QPointF &place) const
{
    return mixture().colorAt(static_cast<float>(place.x()), static_cast<float>(place.y()));
}

QImage RecordBackdrop::picture(const QRect &pixels, double scale) const
{
    static const Thresholds thresholds;
    const Mixture mixed = mixture();
    QImage image(pixels.size(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto *const line =
            reinterpret_cast<QRgb *>(image.scanLine(y)); // lines of this format are made of these
        const auto placeY = static_cast<float>((pixels.top() + y + 0.5) / scale);
        for (int x = 0; x < image.width(); ++x)
            line[x] = mixed.colorAt(static_cast<float>((pixels.left() + x + 0.5) / scale), placeY,
                                    thresholds.at(x, y));
    }
    return image;
}

QSGNode *RecordBackdrop::updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *)
{
    if (width() <= 0 || height() <= 0) {
        delete oldNode;
        m_isStale = true;
        return nullptr;
    }
    auto *plain = static_cast<QSGRectangleNode *>(oldNode);
    QSGImageNode *image = nullptr;
    if (plain) {
        image = static_cast<QSGImageNode *>(plain->firstChild());
    } else {
        plain = window()->createRectangleNode();
        image = window()->createImageNode();
        image->setOwnsTexture(true);
        image->setFiltering(QSGTexture::Nearest);
        plain->appendChildNode(image); // which owns it from here on
        m_isStale = true;
    }
    if (!m_isStale)
        return plain;
    m_isStale = false;
    const double scale = window()->effectiveDevicePixelRatio();
    const Mixture mixed = mixture();
    constexpr float farAway = 1e9F;
    plain->setColor(mixed.colorAt(farAway, farAway));
    plain->setRect(boundingRect());
    const QRectF glowing = (mixed.first.area() | mixed.second.area()) & boundingRect();
    const QRect pixels = QRectF(glowing.topLeft() * scale, glowing.size() * scale).toAlignedRect();
    image->setTexture(window()->createTextureFromImage(picture(pixels, scale)));
    image->setRect(QRectF(pixels.topLeft() / scale, QSizeF(pixels.size()) / scale));
    return plain;
}

} // namespace talvenor
