#include "screens/paint/GradientFill.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace talvenor {

namespace {

/// The rectangle with its corners rounded, by no more than makes a capsule of it.
QPainterPath roundedRectangle(const QRectF &area, qreal radius)
{
    const qreal fitting = bounded(radius, 0, std::min(area.width(), area.height()) / 2);
    QPainterPath path;
    path.addRoundedRect(area, fitting, fitting);
    return path;
}

} // namespace

GradientFill::GradientFill(QQuickItem *parent) : PaintedItem(parent)
{
    connect(this, &GradientFill::changed, this, &GradientFill::repaintPicture);
}

QRectF GradientFill::pictureArea() const
{
    const QRectF area = boundingRect();
    if (area.isEmpty() || !m_isBorderCentered)
        return area;
    const qreal outside = std::ceil(m_borderWidth / 2);
    return area.marginsAdded({outside, outside, outside, outside});
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
        return area.topLeft() + QPointF(bounded(fraction.x(), -10, 10) * area.width(),
                                        bounded(fraction.y(), -10, 10) * area.height());
    };
    QLinearGradient gradient(place(m_startPoint), place(m_endPoint));
    setEvenStops(gradient, {m_startColor, m_middleColor, m_endColor});
    painter.setBrush(gradient);
    painter.drawPath(roundedRectangle(area, m_radius));
}

void GradientFill::paintBorder(QPainter &painter) const
{
    const QRectF area = boundingRect();
    const qreal corner = bounded(m_radius, 0, std::min(area.width(), area.height()) / 2);
    const qreal outside = m_isBorderCentered ? m_borderWidth / 2 : 0;
    const qreal inside = m_borderWidth - outside;
    // As a shape between two outlines: a pen's width would be rounded for thin lines.
    QPainterPath border = roundedRectangle(area.marginsAdded({outside, outside, outside, outside}),
                                           corner > 0 ? corner + outside : 0);
    const QRectF inner = area.marginsRemoved({inside, inside, inside, inside});
    if (inner.isValid())
        border.addPath(roundedRectangle(inner, corner - inside));
    border.setFillRule(Qt::OddEvenFill);
    QLinearGradient gradient(area.topLeft(), m_isBorderVertical ? area.bottomLeft() : area.topRight());
    setEvenStops(gradient, {m_borderStartColor, m_borderMiddleColor, m_borderEndColor});
    painter.setBrush(gradient);
    painter.drawPath(border);
}

} // namespace talvenor
