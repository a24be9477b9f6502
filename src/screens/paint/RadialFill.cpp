#include "screens/paint/RadialFill.h"

#include <QPainter>
#include <QRadialGradient>

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
    if (m_endRadius <= 0 || width() <= 0 || height() <= 0)
        return {};
    const qreal radius = std::ceil(m_endRadius);
    return QRectF(-radius, -radius, 2 * radius, 2 * radius).translated(centerPoint());
}

qreal RadialFill::pictureScale(qreal displayScale) const
{
    // There is nothing sharp in it: this many points suffice for the largest.
    constexpr qreal enough = 800;
    return m_endRadius > 0 ? std::min(displayScale, std::max(0.25, enough / (2 * m_endRadius)))
                           : displayScale;
}

void RadialFill::paintPicture(QPainter &painter) const
{
    const QPointF center = centerPoint();
    const qreal start = std::clamp(m_startRadius, 0.0, m_endRadius);
    QRadialGradient gradient(center, m_endRadius);
    gradient.setColorAt(0, m_color);
    gradient.setColorAt(std::min(start / m_endRadius, 0.9999), m_color);
    gradient.setColorAt(1, Qt::transparent);
    painter.setBrush(gradient);
    painter.drawEllipse(center, m_endRadius, m_endRadius);
}

} // namespace talvenor
