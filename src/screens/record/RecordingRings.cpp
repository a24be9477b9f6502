#include "screens/record/RecordingRings.h"

#include "screens/record/Easing.h"

#include <QImage>
#include <QPainter>

#include <cmath>
#include <numbers>

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

QRectF RecordingRings::pictureArea() const
{
    // The widest of them with its line and a pixel for its smooth edge.
    const double side = m_buttonSize + 56 + 1.5 + 2;
    return {(width() - side) / 2, (height() - side) / 2, side, side};
}

void RecordingRings::paintPicture(QPainter &painter) const
{
    auto &image = *static_cast<QImage *>(painter.device()); // which is what pictures are painted on
    const QTransform toPoints = painter.transform();
    const double level = shownLevel();
    drawArc(image, toPoints, {m_buttonSize + 38, 2.5, 0.65, 0.55, m_ringRotation});
    drawArc(image, toPoints, {m_buttonSize + 56, 1.5, 0.45, 0.25, -0.6 * m_ringRotation});
    drawArc(image, toPoints, {m_buttonSize + 22 + level * 34, 1.5, 1, 0.15 + level * 0.25, 0});
}

/// Point by point, and only those near the arc: a painter's strokes with gradients take ten times as long.
void RecordingRings::drawArc(QImage &image, const QTransform &toPoints, const Arc &arc) const
{
    const auto scale = static_cast<float>(toPoints.m11());
    const QPointF middle = toPoints.map(QPointF(width() / 2, height() / 2));
    const auto centerX = static_cast<float>(middle.x());
    const auto centerY = static_cast<float>(middle.y());
    const float radius = static_cast<float>(arc.diameter / 2) * scale;
    const float half = static_cast<float>(arc.lineWidth / 2) * scale;
    const float outer = radius + half + 1;
    const float inner = radius - half - 1;
    constexpr auto turn = static_cast<float>(2 * std::numbers::pi);
    const auto start = static_cast<float>(arc.rotation / 360 * 2 * std::numbers::pi);
    const float end = start + static_cast<float>(arc.fraction) * turn;
    const QPointF startPoint(radius * std::cos(start), radius * std::sin(start));
    const QPointF endPoint(radius * std::cos(end), radius * std::sin(end));

    const float red = m_color.redF();
    const float green = m_color.greenF();
    const float blue = m_color.blueF();
    const auto drawPoint = [&](QRgb &point, float dx, float dy) {
        const float distance = std::sqrt(dx * dx + dy * dy);
        float coverage = half + 0.5F - std::abs(distance - radius);
        if (coverage <= 0)
            return; // the caps are no wider than the line
        float strength = 1;
        if (arc.fraction < 1) {
            // Where on the circle it is, 0 at the beginning of the arc and 1 after a whole turn.
            float place = (std::atan2(dy, dx) - start) / turn;
            place -= std::floor(place);
            strength = 1 - std::abs(2 * place - 1);
            if (place > static_cast<float>(arc.fraction)) {
                // Beyond the ends there are only their round caps.
                const auto distanceTo = [dx, dy](const QPointF &cap) {
                    return std::hypot(dx - static_cast<float>(cap.x()), dy - static_cast<float>(cap.y()));
                };
                coverage = half + 0.5F - std::min(distanceTo(startPoint), distanceTo(endPoint));
            }
        }
        // Lines narrower than a point cover no more than their width.
        coverage = std::clamp(coverage, 0.0F, std::min(1.0F, 2 * half));
        const float opacity = coverage * strength * static_cast<float>(arc.opacity);
        if (opacity <= 0)
            return;
        const float kept = 1 - opacity;
        const auto over = [kept, opacity](float color, int below) {
            return qRound(color * opacity * 255 + static_cast<float>(below) * kept);
        };
        point = qRgba(over(red, qRed(point)), over(green, qGreen(point)), over(blue, qBlue(point)),
                      over(1, qAlpha(point)));
    };

    const int firstRow = std::max(0, static_cast<int>(std::floor(centerY - outer)));
    const int lastRow = std::min(image.height() - 1, static_cast<int>(std::ceil(centerY + outer)));
    for (int y = firstRow; y <= lastRow; ++y) {
        auto *const line = reinterpret_cast<QRgb *>(image.scanLine(y)); // as this format is laid out
        const float dy = static_cast<float>(y) + 0.5F - centerY;
        const float reach = std::sqrt(std::max(0.0F, outer * outer - dy * dy));
        const float hole = std::sqrt(std::max(0.0F, inner * inner - dy * dy));
        const auto drawSpan = [&](float from, float to) {
            const int first = std::max(0, static_cast<int>(std::floor(centerX + from)));
            const int last = std::min(image.width() - 1, static_cast<int>(std::floor(centerX + to)));
            for (int x = first; x <= last; ++x)
                drawPoint(line[x], static_cast<float>(x) + 0.5F - centerX, dy);
        };
        if (hole > 1) {
            // A point in the middle of both spans would be drawn twice.
            drawSpan(-reach, -hole);
            drawSpan(hole, reach);
        } else {
            drawSpan(-reach, reach);
        }
    }
}

} // namespace talvenor
