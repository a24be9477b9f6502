#include "screens/paint/SoftShadow.h"

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

/// One row or column of an image: `count` bytes, each `step` after the last.
struct Line
{
    uchar *first;
    qsizetype step;
    int count;
};

void blurLine(const Line &line, const std::vector<float> &kernel, std::vector<float> &copy)
{
    // With a margin of nothing on both sides, the sum needs no tests at its ends.
    const size_t half = kernel.size() / 2;
    copy.assign(static_cast<size_t>(line.count) + 2 * half, 0.0F);
    for (int i = 0; i < line.count; ++i)
        copy[half + static_cast<size_t>(i)] = line.first[i * line.step];
    for (int i = 0; i < line.count; ++i) {
        const float sum = std::inner_product(kernel.begin(), kernel.end(), copy.begin() + i, 0.0F);
        line.first[i * line.step] = static_cast<uchar>(std::lround(sum));
    }
}

/// Blurs an image of opacities in place. A Gaussian over the plane is one along the rows and one along the
/// columns.
void blur(QImage &opacities, qreal deviation)
{
    const std::vector<float> kernel = gaussianKernel(deviation);
    std::vector<float> copy;
    const qsizetype stride = opacities.bytesPerLine();
    for (int y = 0; y < opacities.height(); ++y)
        blurLine({opacities.scanLine(y), 1, opacities.width()}, kernel, copy);
    for (int x = 0; x < opacities.width(); ++x)
        blurLine({opacities.bits() + x, stride, opacities.height()}, kernel, copy);
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
    const qreal margin = m_blurRadius / 2 * reach + 1;
    return boundingRect().translated(m_offsetX, m_offsetY).marginsAdded({margin, margin, margin, margin});
}

qreal SoftShadow::pictureScale(qreal displayScale) const
{
    // A Gaussian this many points wide is drawn larger without a trace; finer ones would cost and show
    // nothing.
    constexpr qreal enough = 4;
    return m_blurRadius > 0 ? std::min(displayScale, enough / (m_blurRadius / 2)) : displayScale;
}

void SoftShadow::paintPicture(QPainter &painter) const
{
    const QTransform toPoints = painter.transform();
    QImage opacities(painter.device()->width(), painter.device()->height(), QImage::Format_Grayscale8);
    opacities.fill(0);
    QPainter shape(&opacities);
    shape.setRenderHint(QPainter::Antialiasing);
    shape.setTransform(toPoints);
    shape.setPen(Qt::NoPen);
    shape.setBrush(Qt::white);
    const qreal corner = std::clamp(m_cornerRadius, 0.0, std::min(width(), height()) / 2);
    shape.drawRoundedRect(boundingRect().translated(m_offsetX, m_offsetY), corner, corner);
    shape.end();
    if (m_blurRadius > 0)
        blur(opacities, m_blurRadius / 2 * toPoints.m11());

    QImage shadow(opacities.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < shadow.height(); ++y) {
        const uchar *from = opacities.constScanLine(y);
        auto *to = reinterpret_cast<QRgb *>(shadow.scanLine(y)); // lines of this format are made of these
        for (int x = 0; x < shadow.width(); ++x)
            to[x] = qPremultiply(
                qRgba(m_color.red(), m_color.green(), m_color.blue(), qRound(m_color.alphaF() * from[x])));
    }
    painter.resetTransform();
    painter.drawImage(0, 0, shadow);
}

} // namespace talvenor
