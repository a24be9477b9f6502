#include "screens/GradientFill.h"

#include <QPainter>

#include <algorithm>

namespace talvenor {

GradientFill::GradientFill(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    connect(this, &GradientFill::changed, this, [this] { update(); });
}

void GradientFill::paint(QPainter *painter)
{
    const QRectF area = boundingRect();
    const qreal radius = std::min(m_radius, std::min(area.width(), area.height()) / 2);
    QLinearGradient gradient(area.topLeft(), m_isDiagonal ? area.bottomRight() : area.topRight());
    gradient.setColorAt(0, m_startColor);
    gradient.setColorAt(1, m_endColor);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(gradient);
    painter->drawRoundedRect(area, radius, radius);
}

} // namespace talvenor
