#include "screens/paint/SoftShadow.h"

#include "screens/paint/Dither.h"

#include <QImage>
#include <QPainter>

#include <cmath>
#include <numeric>

namespace talvenor {

namespace {

/// Standard deviations beyond which a Gaussian is taken to be nothing.
constexpr qreal reach = 3;

/// The weights of a Gaussian on both sides of its centre; their sum is 1.
std::vector<float> gaussianKernel(qreal deviation)
{
    const int half = static_cast<int>(std::ceil(deviation * reach));
    std::vector<float> kernel;
    for (int i = -half; i <= half; ++i)
        kernel.push_back(static_cast<float>(std::exp(-i * i / (2 * deviation * deviation))));
    const float sum = std::accumulate(kernel.begin(), kernel.end(), 0.0F);
    for (float &weight : kernel)
        weight /= sum;
    return kernel;
}

/// Opacities on a grid, from 0 to 1.
struct Field
{
    int width;
    int height;
    std::vector<float> values;

    [[nodiscard]] float at(int x, int y) const
    {
        const int column = std::clamp(x, 0, width - 1);
        const int row = std::clamp(y, 0, height - 1);
        return values[static_cast<size_t>(row) * static_cast<size_t>(width) + static_cast<size_t>(column)];
    }

    /// The value at a place between the grid's points, mixed from the four around it.
    [[nodiscard]] float between(float x, float y) const
    {
        const int column = static_cast<int>(std::floor(x));
        const int row = static_cast<int>(std::floor(y));
        const float right = x - static_cast<float>(column);
        const float below = y - static_cast<float>(row);
        return (at(column, row) * (1 - right) + at(column + 1, row) * right) * (1 - below) +
               (at(column, row + 1) * (1 - right) + at(column + 1, row + 1) * right) * below;
    }
};

/// Blurs `count` values, each `step` after the last, in place.
void blurLine(float *first, size_t step, size_t count, const std::vector<float> &kernel,
              std::vector<float> &copy)
{
    // With a margin of nothing on both sides, the sum needs no tests at its ends.
    const size_t half = kernel.size() / 2;
    copy.assign(count + 2 * half, 0.0F);
    for (size_t i = 0; i < count; ++i)
        copy[half + i] = first[i * step];
    for (size_t i = 0; i < count; ++i)
        first[i * step] = std::inner_product(kernel.begin(), kernel.end(), copy.data() + i, 0.0F);
}

/// Blurs a field in place. A Gaussian over the plane is one along the rows and one along the columns.
void blur(Field &field, qreal deviation)
{
    const std::vector<float> kernel = gaussianKernel(deviation);
    std::vector<float> copy;
    const auto width = static_cast<size_t>(field.width);
    const auto height = static_cast<size_t>(field.height);
    for (size_t y = 0; y < height; ++y)
        blurLine(field.values.data() + y * width, 1, width, kernel, copy);
    for (size_t x = 0; x < width; ++x)
        blurLine(field.values.data() + x, width, height, kernel, copy);
}

/// How much of each point of a grid the rounded rectangle covers.
Field coverage(QSize size, const QTransform &toGrid, const QRectF &rectangle, qreal corner)
{
    QImage image(size, QImage::Format_Grayscale8);
    image.fill(0);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setTransform(toGrid);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(rectangle, corner, corner);
    painter.end();
    Field field{size.width(), size.height(), {}};
    field.values.reserve(static_cast<size_t>(size.width()) * static_cast<size_t>(size.height()));
    for (int y = 0; y < size.height(); ++y) {
        const uchar *line = image.constScanLine(y);
        std::transform(line, line + size.width(), std::back_inserter(field.values),
                       [](uchar value) { return static_cast<float>(value) / 255; });
    }
    return field;
}

} // namespace

SoftShadow::SoftShadow(QQuickItem *parent) : PaintedItem(parent)
{
    connect(this, &SoftShadow::changed, this, &SoftShadow::repaintPicture);
}

QRectF SoftShadow::pictureArea() const
{
    if (width() <= 0 || height() <= 0 || m_color.alpha() == 0)
        return {};
    const qreal margin = std::max(m_blurRadius, 0.0) / 2 * reach + 1;
    return boundingRect().translated(m_offsetX, m_offsetY).marginsAdded({margin, margin, margin, margin});
}

void SoftShadow::paintPicture(QPainter &painter) const
{
    // A Gaussian that is this many points wide has all that is to be seen: larger ones are blurred on a
    // coarser grid, whose points are mixed to the picture's.
    constexpr qreal enough = 5;
    const QTransform toPoints = painter.transform();
    const qreal deviation = std::max(m_blurRadius, 0.0) / 2;
    const qreal gridScale = std::min(toPoints.m11(), enough / std::max(deviation, 0.001));

    // Far from its corners an edge's shadow is the same all along: that of a small rectangle, drawn out, is
    // enough.
    const qreal corner = bounded(m_cornerRadius, 0, std::min(width(), height()) / 2);
    const qreal margin = deviation * reach + 1;
    const QSizeF half(std::min(width() / 2, corner + margin), std::min(height() / 2, corner + margin));
    const QSize grid(static_cast<int>(std::ceil((half.width() + margin) * 2 * gridScale)),
                     static_cast<int>(std::ceil((half.height() + margin) * 2 * gridScale)));
    Field field = coverage(grid, QTransform::fromScale(gridScale, gridScale),
                           {margin, margin, half.width() * 2, half.height() * 2}, corner);
    if (m_blurRadius > 0)
        blur(field, deviation * gridScale);

    // The grid's coordinates of the picture's columns, or of its rows.
    const auto places = [&](int count, qreal toShape, qreal length, qreal halfLength) {
        std::vector<float> result;
        for (int point = 0; point < count; ++point) {
            const qreal inside = (point + 0.5) / toPoints.m11() + toShape;
            const qreal small = inside < length / 2 ? std::min(inside, halfLength)
                                                    : 2 * halfLength - std::min(length - inside, halfLength);
            result.push_back(static_cast<float>((small + margin) * gridScale - 0.5));
        }
        return result;
    };
    const QPointF origin = toPoints.inverted().map(QPointF(0, 0));
    QImage shadow(painter.device()->width(), painter.device()->height(), QImage::Format_ARGB32_Premultiplied);
    const std::vector<float> columns = places(shadow.width(), origin.x() - m_offsetX, width(), half.width());
    const std::vector<float> rows = places(shadow.height(), origin.y() - m_offsetY, height(), half.height());
    for (int y = 0; y < shadow.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(shadow.scanLine(y)); // lines of this format are made of these
        for (int x = 0; x < shadow.width(); ++x) {
            const float share = field.between(columns[static_cast<size_t>(x)], rows[static_cast<size_t>(y)]);
            line[x] = share <= 0 ? 0 : ditheredPixel(m_color, std::min(share, 1.0F), ditherThreshold(x, y));
        }
    }
    painter.resetTransform();
    painter.drawImage(0, 0, shadow);
}

} // namespace talvenor
