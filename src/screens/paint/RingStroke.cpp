#include "screens/paint/RingStroke.h"

#include <QConicalGradient>
#include <QPainter>
#include <QPen>

namespace talvenor {

RingStroke::RingStroke(QQuickItem *parent) : PaintedItem(parent)
{
    connect(this, &RingStroke::changed, this, &RingStroke::repaintPicture);
}

QVariantList RingStroke::colors() const
{
    return {m_colors.begin(), m_colors.end()};
}

void RingStroke::setColors(const QVariantList &colors)
{
    QList<QColor> valid;
    for (const QVariant &color : colors) {
        if (color.value<QColor>().isValid())
            valid.append(color.value<QColor>());
    }
    if (valid == m_colors)
        return;
    m_colors = valid;
    Q_EMIT changed();
}

QRectF RingStroke::circle() const
{
    const qreal diameter = std::min(width(), height());
    return {(width() - diameter) / 2, (height() - diameter) / 2, diameter, diameter};
}

QRectF RingStroke::pictureArea() const
{
    const QRectF area = circle();
    if (area.isEmpty() || m_colors.isEmpty() || !(m_lineWidth > 0) || !(m_fraction > 0))
        return {};
    const qreal margin = m_lineWidth / 2 + 1;
    return area.marginsAdded({margin, margin, margin, margin});
}

void RingStroke::paintPicture(QPainter &painter) const
{
    const QRectF area = circle();
    // Angles of Qt run against the clock.
    painter.translate(area.center());
    painter.scale(1, -1);
    QBrush brush(m_colors.constFirst());
    if (m_colors.size() > 1) {
        QConicalGradient gradient(QPointF(0, 0), 0);
        setEvenStops(gradient, m_colors);
        // Its angles are counted in the mirrored plane, where they run against the clock again.
        brush = QBrush(gradient);
    }
    painter.setPen(QPen(brush, m_lineWidth, Qt::SolidLine, m_hasRoundCaps ? Qt::RoundCap : Qt::FlatCap));
    painter.setBrush(Qt::NoBrush);
    const QRectF centered(-area.width() / 2, -area.height() / 2, area.width(), area.height());
    if (m_fraction >= 1) {
        painter.drawEllipse(centered);
    } else {
        constexpr qreal wholeCircle = 360 * 16; // in sixteenths of a degree
        painter.drawArc(centered, 0, qRound(m_fraction * wholeCircle));
    }
}

} // namespace talvenor
