#include "screens/paint/RadialFill.h"

#include "screens/paint/Dither.h"

#include <QImage>
#include <QPainter>

#include <cmath>

namespace talvenor {

RadialFill::RadialFill(QQuickItem *parent) : PaintedItem(parent)
{
    connect(this, &RadialFill::changed, this, &RadialFill::repaintPicture);
    connect(this, &RadialFill::moved, this, &RadialFill::update);
}

QPointF RadialFill::centerPoint() const
{
    // Whole pixels, so that the picture painted at one size of the item fits at every other.
    return {std::round(m_center.x() * width()), std::round(m_center.y() * height())};
}

QRectF RadialFill::pictureArea() const
{
    if (!(m_endRadius > 0) || width() <= 0 || height() <= 0)
        return {};
    const qreal radius = std::ceil(m_endRadius);
    return QRectF(-radius, -radius, 2 * radius, 2 * radius).translated(centerPoint());
}

qreal RadialFill::pictureScale(qreal displayScale) const
{
    // There is nothing sharp in it: this many points suffice for the largest.
    constexpr qreal enough = 800;
    return m_endRadius > 0 ? std::min(displayScale, std::max(1.0, enough / (2 * m_endRadius))) : displayScale;
}

void RadialFill::paintPicture(QPainter &painter) const
{
    // Not by a gradient of the painter's, which has no means against rings in faint colours.
    const QTransform toPoints = painter.transform();
    const QPointF center = toPoints.map(centerPoint());
    const auto scale = static_cast<float>(toPoints.m11());
    const float start = static_cast<float>(bounded(m_startRadius, 0, m_endRadius)) * scale;
    const float end = static_cast<float>(m_endRadius) * scale;
    const float fade = std::max(end - start, 0.001F);
    QImage glow(painter.device()->width(), painter.device()->height(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < glow.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(glow.scanLine(y)); // lines of this format are made of these
        const auto dy = static_cast<float>(y + 0.5 - center.y());
        for (int x = 0; x < glow.width(); ++x) {
            const auto dx = static_cast<float>(x + 0.5 - center.x());
            const float share = (end - std::sqrt(dx * dx + dy * dy)) / fade;
            line[x] = share <= 0 ? 0 : ditheredPixel(m_color, std::min(share, 1.0F), ditherThreshold(x, y));
        }
    }
    painter.resetTransform();
    painter.drawImage(0, 0, glow);
}

} // namespace talvenor
