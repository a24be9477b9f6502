#include "screens/record/RecordDisc.h"

#include "screens/paint/Dither.h"

#include <QPainter>
#include <QPainterPath>

#include <array>
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
    const int rings = std::max(24, static_cast<int>(4 * radius / deviation));
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
    const QTransform toPoints = painter.transform();
    const double scale = toPoints.m11();
    const double deviation = shadow.blurRadius / 2;
    const double end = width() / 2 + deviation * reach;
    // The shadow is equally strong all around, so that its strength along one radius is enough; between so
    // many places of that it is straight.
    constexpr int steps = 64;
    std::array<float, steps + 2> strengths{};
    for (size_t i = 0; i < steps; ++i)
        strengths[i] =
            static_cast<float>(shadowStrength(static_cast<double>(i) * end / steps, width() / 2, deviation));
    const auto strengthAt = [&strengths](float place) {
        const auto index = static_cast<size_t>(place);
        return strengths[index] +
               (strengths[index + 1] - strengths[index]) * (place - static_cast<float>(index));
    };
    const QPointF center = toPoints.map(boundingRect().center() + QPointF(0, shadow.offsetY));
    const auto stepsPerPoint = static_cast<float>(steps / (end * scale));
    QImage image(painter.device()->width(), painter.device()->height(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    for (int y = 0; y < image.height(); ++y) {
        auto *const line = reinterpret_cast<QRgb *>(image.scanLine(y)); // as this format is laid out
        const auto dy = static_cast<float>(y + 0.5 - center.y());
        for (int x = 0; x < image.width(); ++x) {
            const auto dx = static_cast<float>(x + 0.5 - center.x());
            const float place = std::sqrt(dx * dx + dy * dy) * stepsPerPoint;
            if (place < steps)
                line[x] = ditheredPixel(shadow.color, strengthAt(place), ditherThreshold(x, y));
        }
    }
    painter.save();
    painter.resetTransform();
    painter.drawImage(0, 0, image);
    painter.restore();
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
