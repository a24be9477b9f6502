#include "screens/record/RecordDisc.h"

#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>

namespace talvenor {

namespace {

constexpr double shadowOffset = 10;
constexpr double wideShadowOffset = 4;
constexpr double wideShadowRadius = 60;
/// Standard deviations beyond which a Gaussian is taken to be nothing.
constexpr double reach = 3;

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

} // namespace

RecordDisc::RecordDisc(QQuickItem *parent) : PaintedItem(parent)
{
    connect(this, &RecordDisc::changed, this, &RecordDisc::repaintPicture);
}

double RecordDisc::shadowStrength(double distance, double radius, double deviation)
{
    // The integral over the disc in polar coordinates; that over the angle is the Bessel function I0.
    const int rings = std::max(128, static_cast<int>(4 * radius / deviation));
    const double variance = deviation * deviation;
    double sum = 0;
    for (int i = 0; i < rings; ++i) {
        const double ring = radius * (i + 0.5) / rings;
        const double bend = distance * ring / variance;
        const double nearness = -(distance - ring) * (distance - ring) / (2 * variance);
        // For large arguments I0(x) is e^x / sqrt(2 pi x), beyond what a number can hold.
        const double scaledBessel = bend < 500 ? std::cyl_bessel_i(0.0, bend) * std::exp(-bend)
                                               : 1 / std::sqrt(2 * 3.141592653589793 * bend);
        sum += ring / variance * std::exp(nearness) * scaledBessel;
    }
    return std::min(1.0, sum * radius / rings);
}

QRectF RecordDisc::pictureArea() const
{
    if (width() <= 0 || height() <= 0)
        return {};
    const double margin =
        std::max(m_shadowRadius / 2 * reach + shadowOffset, wideShadowRadius / 2 * reach + wideShadowOffset);
    return boundingRect().marginsAdded({margin, margin, margin, margin});
}

void RecordDisc::paintPicture(QPainter &painter) const
{
    paintShadow(painter, {m_wideShadowColor, wideShadowRadius, wideShadowOffset});
    paintShadow(painter, {m_shadowColor, m_shadowRadius, shadowOffset});
    paintDisc(painter);
}

void RecordDisc::paintShadow(QPainter &painter, const Shadow &shadow) const
{
    if (shadow.blurRadius <= 0 || !shadow.color.isValid())
        return;
    const double deviation = shadow.blurRadius / 2;
    const double end = width() / 2 + deviation * reach;
    const QPointF center = boundingRect().center() + QPointF(0, shadow.offsetY);
    // The circle has the shadow's strength on its every point, so a gradient with enough stops is exact.
    constexpr int steps = 64;
    QRadialGradient gradient(center, end);
    for (int i = 0; i <= steps; ++i) {
        const double place = static_cast<double>(i) / steps;
        const double strength = i == steps ? 0 : shadowStrength(place * end, width() / 2, deviation);
        gradient.setColorAt(place, withOpacity(shadow.color, shadow.color.alphaF() * strength));
    }
    painter.setBrush(gradient);
    painter.drawEllipse(center, end, end);
}

void RecordDisc::paintDisc(QPainter &painter) const
{
    const QRectF disc = boundingRect();
    QLinearGradient fill(disc.topLeft(), disc.bottomRight());
    setEvenStops(fill, {m_startColor, m_endColor});
    painter.setBrush(fill);
    painter.drawEllipse(disc);

    QLinearGradient highlight(QPointF(disc.center().x(), disc.top()), disc.center());
    setEvenStops(highlight,
                 {withOpacity(Qt::white, 0.28), withOpacity(Qt::white, 0.05), withOpacity(Qt::white, 0)});
    painter.setBrush(highlight);
    painter.drawEllipse(disc);

    QPainterPath border;
    border.addEllipse(disc);
    border.addEllipse(disc.marginsRemoved({1, 1, 1, 1}));
    border.setFillRule(Qt::OddEvenFill);
    QLinearGradient edge(disc.topLeft(), disc.bottomLeft());
    setEvenStops(edge, {withOpacity(Qt::white, 0.3), QColor(Qt::transparent), withOpacity(Qt::black, 0.08)});
    painter.setBrush(edge);
    painter.drawPath(border);
}

} // namespace talvenor
