#include "screens/record/RecordingRings.h"

#include "screens/record/Easing.h"

#include <QConicalGradient>
#include <QPainter>
#include <QPen>

namespace talvenor {

RecordingRings::RecordingRings(QQuickItem *parent) : PaintedItem(parent)
{
    connect(this, &RecordingRings::changed, this, &RecordingRings::repaintPicture);
}

void RecordingRings::setAudioLevel(double level)
{
    // The level is a number from a device; anything else than 0 to 1 would be no circle.
    const double bounded = level > 0 ? std::min(level, 1.0) : 0;
    if (bounded == m_audioLevel)
        return;
    m_previousLevel = shownLevel();
    m_audioLevel = bounded;
    m_sinceChange.start();
    Q_EMIT audioLevelChanged();
    update();
}

double RecordingRings::shownLevel() const
{
    if (!m_sinceChange.isValid())
        return m_audioLevel;
    const double progress = Easing::out(static_cast<double>(m_sinceChange.elapsed()) / levelDuration);
    return m_previousLevel + (m_audioLevel - m_previousLevel) * progress;
}

QColor RecordingRings::shade(double opacity) const
{
    QColor shade = m_color;
    shade.setAlphaF(static_cast<float>(opacity));
    return shade;
}

QRectF RecordingRings::pictureArea() const
{
    // The widest of them with its line and a pixel for its smooth edge.
    const double side = m_buttonSize + 56 + 1.5 + 2;
    return {(width() - side) / 2, (height() - side) / 2, side, side};
}

void RecordingRings::paintPicture(QPainter &painter) const
{
    painter.translate(width() / 2, height() / 2);
    painter.setBrush(Qt::NoBrush);
    paintArc(painter, {m_buttonSize + 38, 2.5, 0.65, 0.55, m_ringRotation});
    paintArc(painter, {m_buttonSize + 56, 1.5, 0.45, 0.25, -0.6 * m_ringRotation});
    const double level = shownLevel();
    const double radius = (m_buttonSize + 22 + level * 34) / 2;
    painter.setPen(QPen(shade(0.15 + level * 0.25), 1.5));
    painter.drawEllipse(QPointF(0, 0), radius, radius);
}

void RecordingRings::paintArc(QPainter &painter, const Arc &arc) const
{
    painter.save();
    painter.rotate(arc.rotation);
    // Angles of Qt run against the clock.
    painter.scale(1, -1);
    QConicalGradient gradient(QPointF(0, 0), 0);
    setEvenStops(gradient, {shade(0), shade(arc.opacity), shade(0)});
    painter.setPen(QPen(QBrush(gradient), arc.lineWidth, Qt::SolidLine, Qt::RoundCap));
    const double radius = arc.diameter / 2;
    // In sixteenths of a degree; the mirrored plane makes it run with the clock.
    painter.drawArc(QRectF(-radius, -radius, arc.diameter, arc.diameter), 0, qRound(arc.fraction * 360 * 16));
    painter.restore();
}

} // namespace talvenor
