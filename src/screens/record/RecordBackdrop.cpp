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
        const float fade = (endRadius - std::sqrt(dx * dx + dy * dy)) / (endRadius - startRadius);
        return opacity * std::min(1.0F, std::max(0.0F, fade));
    }

    [[nodiscard]] QRectF area() const
    {
        const double radius = endRadius;
        return QRectF(-radius, -radius, 2 * radius, 2 * radius).translated(center);
    }
};

float overlay(float below, float above)
{
    return below <= 0.5F ? 2 * below * above : 1 - 2 * (1 - below) * (1 - above);
}

} // namespace

struct RecordBackdrop::Mixture
{
    Channels window;
    Glow first;
    Glow second;
    Channels material;
    float materialOpacity;

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
            value += (overlay(value, material[i]) - value) * materialOpacity;
            result[i] = static_cast<int>(value * 255 + rounding);
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
            channels(m_material),
            m_material.alphaF()};
}

QColor RecordBackdrop::colorAt(const QPointF &place) const
{
    return mixture().colorAt(static_cast<float>(place.x()), static_cast<float>(place.y()));
}

QImage RecordBackdrop::picture(const QRect &pixels, double scale) const
{
    const Mixture mixed = mixture();
    QImage image(pixels.size(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto *const line =
            reinterpret_cast<QRgb *>(image.scanLine(y)); // lines of this format are made of these
        const auto placeY = static_cast<float>((pixels.top() + y + 0.5) / scale);
        for (int x = 0; x < image.width(); ++x)
            line[x] = mixed.colorAt(static_cast<float>((pixels.left() + x + 0.5) / scale), placeY,
                                    ditherThreshold(x, y));
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
