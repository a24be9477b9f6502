#include "screens/record/AudioWaveform.h"

#include <QDateTime>
#include <QSGImageNode>

#include <cmath>

namespace talvenor {

namespace {

constexpr int stepsPerSecond = 30;

/// A colour ready for blending, 0 to 255 in each channel.
struct Premultiplied
{
    float red;
    float green;
    float blue;
    float alpha;

    Premultiplied(const QColor &color, double opacity)
    {
        const float strength = color.alphaF() * static_cast<float>(opacity);
        red = color.redF() * strength * 255;
        green = color.greenF() * strength * 255;
        blue = color.blueF() * strength * 255;
        alpha = strength * 255;
    }
};

/// A capsule with a gradient from its lower end to its upper one, in pixels of an image.
struct Capsule
{
    QRectF area;
    Premultiplied lower;
    Premultiplied upper;

    void draw(QImage &image) const
    {
        const auto radius = static_cast<float>(std::min(area.width(), area.height()) / 2);
        const auto left = static_cast<float>(area.left());
        const auto right = static_cast<float>(area.right());
        const auto top = static_cast<float>(area.top());
        const auto bottom = static_cast<float>(area.bottom());
        const int lastRow = std::min(image.height() - 1, static_cast<int>(std::ceil(bottom)));
        const int lastColumn = std::min(image.width() - 1, static_cast<int>(std::ceil(right)));
        for (int y = std::max(0, static_cast<int>(top)); y <= lastRow; ++y) {
            auto *const line = reinterpret_cast<QRgb *>(image.scanLine(y)); // as this format is laid out
            const float row = static_cast<float>(y) + 0.5F;
            const float share = std::clamp((bottom - row) / (bottom - top), 0.0F, 1.0F);
            const float beyondY = std::max({0.0F, top + radius - row, row - (bottom - radius)});
            for (int x = std::max(0, static_cast<int>(left)); x <= lastColumn; ++x) {
                const float column = static_cast<float>(x) + 0.5F;
                const float beyondX = std::max({0.0F, left + radius - column, column - (right - radius)});
                // How much of the pixel lies within the capsule, by its distance from the edge.
                const float distance = std::sqrt(beyondX * beyondX + beyondY * beyondY);
                const float coverage = std::clamp(radius + 0.5F - distance, 0.0F, 1.0F);
                if (coverage > 0)
                    line[x] = shade(share, coverage);
            }
        }
    }

private:
    [[nodiscard]] QRgb shade(float share, float coverage) const
    {
        const auto channel = [share, coverage](float from, float to) {
            return qRound((from + (to - from) * share) * coverage);
        };
        return qRgba(channel(lower.red, upper.red), channel(lower.green, upper.green),
                     channel(lower.blue, upper.blue), channel(lower.alpha, upper.alpha));
    }
};

} // namespace

AudioWaveform::AudioWaveform(QQuickItem *parent) : QQuickItem(parent), m_presence(*this)
{
    setFlag(ItemHasContents);
    m_clock.start();
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(1000 / stepsPerSecond);
    connect(&m_timer, &QTimer::timeout, this, &AudioWaveform::step);
    connect(&m_presence, &ScreenPresence::changed, this, &AudioWaveform::updateTimer);
    connect(this, &AudioWaveform::colorsChanged, this, &AudioWaveform::update);
}

void AudioWaveform::setLevels(const AudioLevels &levels)
{
    if (levels == m_levels)
        return;
    const bool hasOtherCount = levels.values.size() != m_levels.values.size();
    m_levels = levels;
    setShape(hasOtherCount);
    Q_EMIT levelsChanged();
}

void AudioWaveform::setIsRecording(bool isRecording)
{
    if (isRecording == m_isRecording)
        return;
    m_isRecording = isRecording;
    setShape(false);
    Q_EMIT isRecordingChanged();
}

double AudioWaveform::value() const
{
    return m_levels.values.isEmpty() ? 0 : static_cast<double>(m_levels.values.constLast());
}

void AudioWaveform::componentComplete()
{
    QQuickItem::componentComplete();
    setShape(false);
}

void AudioWaveform::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        setShape(false);
}

double AudioWaveform::moment() const
{
    return static_cast<double>(m_clock.nsecsElapsed()) / 1e6;
}

WaveformMotion::Heights AudioWaveform::shape() const
{
    const auto seconds = static_cast<float>(static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000);
    WaveformMotion::Heights heights{};
    for (size_t i = 0; i < heights.size(); ++i) {
        const float level =
            WaveformShape::barLevel(static_cast<int>(i), m_levels.values, m_isRecording, seconds);
        heights[i] = WaveformShape::barHeight(level, height());
    }
    return heights;
}

void AudioWaveform::setShape(bool isAnimated)
{
    if (!isComponentComplete())
        return;
    m_motion.setTarget(shape(), isAnimated, moment());
    updateTimer();
    update();
}

void AudioWaveform::updateTimer()
{
    const bool moves = m_presence.isOnScreen() && m_motion.isMoving(moment());
    if (moves && !m_timer.isActive())
        m_timer.start();
    else if (!moves)
        m_timer.stop();
}

void AudioWaveform::step()
{
    updateTimer();
    update();
}

double AudioWaveform::leftOf(int index) const
{
    const double bar = WaveformShape::barWidth(width());
    const double all =
        bar * WaveformShape::barCount + WaveformShape::barSpacing * (WaveformShape::barCount - 1);
    return (width() - all) / 2 + index * (bar + WaveformShape::barSpacing);
}

QRectF AudioWaveform::barRect(int index) const
{
    const double tall = shape()[static_cast<size_t>(index)];
    return {leftOf(index), (height() - tall) / 2, WaveformShape::barWidth(width()), tall};
}

QImage AudioWaveform::picture(const QRectF &area, double scale) const
{
    QImage image(qRound(area.width() * scale), qRound(area.height() * scale),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const WaveformMotion::Heights heights = m_motion.at(moment());
    const double bar = WaveformShape::barWidth(width());
    for (int i = 0; i < WaveformShape::barCount; ++i) {
        const double tall = heights[static_cast<size_t>(i)];
        const QPointF corner = QPointF(leftOf(i), (height() - tall) / 2) - area.topLeft();
        const double opacity = WaveformShape::barOpacity(i, tall, height());
        const Capsule capsule{QRectF(corner * scale, QSizeF(bar, tall) * scale),
                              Premultiplied(m_lowerColor, m_isRecording ? opacity : 0.18),
                              Premultiplied(m_upperColor, m_isRecording ? opacity * 0.85 : 0.12)};
        capsule.draw(image);
    }
    return image;
}

QSGNode *AudioWaveform::updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *)
{
    if (width() <= 0 || height() <= 0) {
        delete oldNode;
        return nullptr;
    }
    const double scale = window()->effectiveDevicePixelRatio();
    // Bars that need more room than there is reach beyond the item on both sides.
    const double left = std::floor(std::min(0.0, leftOf(0)));
    const QRectF area(left, 0, std::ceil((width() - 2 * left) * scale) / scale,
                      std::ceil(height() * scale) / scale);
    auto *node = static_cast<QSGImageNode *>(oldNode);
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Linear);
    }
    node->setTexture(
        window()->createTextureFromImage(picture(area, scale), QQuickWindow::TextureHasAlphaChannel));
    node->setRect(area);
    return node;
}

} // namespace talvenor
