#include "screens/paint/GradientFill.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace talvenor {

namespace {

/// The rectangle with its corners rounded, by no more than makes a capsule of it.
QPainterPath roundedRectangle(const QRectF &area, qreal radius)
{
    const qreal fitting = std::clamp(radius, 0.0, std::min(area.width(), area.height()) / 2);
    QPainterPath path;
    path.addRoundedRect(area, fitting, fitting);
    return path;
}

} // namespace

GradientFill::GradientFill(QQuickItem *parent) : PaintedItem(parent)
{
    connect(this, &GradientFill::changed, this, &GradientFill::repaintPicture);
}

void GradientFill::paintPicture(QPainter &painter) const
{
    paintFill(painter);
    if (m_borderWidth > 0)
        paintBorder(painter);
}

void GradientFill::paintFill(QPainter &painter) const
{
    const QRectF area = boundingRect();
    const auto place = [&area](const QPointF &fraction) {
        return area.topLeft() + QPointF(fraction.x() * area.width(), fraction.y() * area.height());
    };
    QLinearGradient gradient(place(m_startPoint), place(m_endPoint));
    setEvenStops(gradient, {m_startColor, m_middleColor, m_endColor});
    painter.setBrush(gradient);
    painter.drawPath(roundedRectangle(area, m_radius));
}

void GradientFill::paintBorder(QPainter &painter) const
{
    const QRectF area = boundingRect();
    const QRectF inner = area.marginsRemoved({m_borderWidth, m_borderWidth, m_borderWidth, m_borderWidth});
    // As a shape between two outlines: a pen's width would be rounded for thin lines.
    QPainterPath border = roundedRectangle(area, m_radius);
    if (inner.isValid()) {
        const qreal fitting = std::min(m_radius, std::min(area.width(), area.height()) / 2);
        border.addPath(roundedRectangle(inner, fitting - m_borderWidth));
    }
    border.setFillRule(Qt::OddEvenFill);
    QLinearGradient gradient(area.topLeft(), m_isBorderVertical ? area.bottomLeft() : area.topRight());
    setEvenStops(gradient, {m_borderStartColor, m_borderMiddleColor, m_borderEndColor});
    painter.setBrush(gradient);
    painter.drawPath(border);
}

} // namespace talvenor
