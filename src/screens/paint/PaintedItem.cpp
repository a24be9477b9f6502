#include "screens/paint/PaintedItem.h"

#include <QImage>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>

#include <cmath>

namespace talvenor {

namespace {

/// True if a picture of the area can be made.
bool isPaintable(const QRectF &area, qreal scale)
{
    constexpr qreal largest = 16384;
    const auto isSize = [&](qreal size) { return size > 0 && size * scale <= largest; };
    return std::isfinite(area.x()) && std::isfinite(area.y()) && isSize(area.width()) &&
           isSize(area.height());
}

/// The area, grown to whole points of the picture.
QRectF onGrid(const QRectF &area, qreal scale)
{
    const qreal left = std::floor(area.left() * scale);
    const qreal top = std::floor(area.top() * scale);
    // What rounding adds to a whole number is no reason for one more row.
    const qreal right = std::ceil(area.right() * scale - 1e-6);
    const qreal bottom = std::ceil(area.bottom() * scale - 1e-6);
    return {left / scale, top / scale, (right - left) / scale, (bottom - top) / scale};
}

} // namespace

PaintedItem::PaintedItem(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void PaintedItem::repaintPicture()
{
    m_isStale = true;
    update();
}

void PaintedItem::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() == oldGeometry.size())
        return;
    if (dependsOnSize())
        m_isStale = true;
    update();
}

void PaintedItem::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        repaintPicture();
    QQuickItem::itemChange(change, value);
}

QImage PaintedItem::picture(const QRectF &area, qreal scale) const
{
    QImage image(qRound(area.width() * scale), qRound(area.height() * scale),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.scale(scale, scale);
    painter.translate(-area.topLeft());
    paintPicture(painter);
    return image;
}

QSGNode *PaintedItem::updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData * /*data*/)
{
    const qreal scale = pictureScale(window()->effectiveDevicePixelRatio());
    const QRectF wanted = pictureArea();
    const QRectF area = isPaintable(wanted, scale) ? onGrid(wanted, scale) : QRectF();
    const QRectF seen = area & visibleArea().marginsAdded({1 / scale, 1 / scale, 1 / scale, 1 / scale});
    if (seen.isEmpty()) {
        delete oldNode;
        m_isStale = true;
        return nullptr;
    }
    auto *node = static_cast<QSGImageNode *>(oldNode);
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Linear);
        m_isStale = true;
    }
    if (m_isStale) {
        node->setTexture(
            window()->createTextureFromImage(picture(area, scale), QQuickWindow::TextureHasAlphaChannel));
        m_isStale = false;
        ++m_paintCount;
    }
    node->setRect(seen);
    node->setSourceRect(QRectF((seen.topLeft() - area.topLeft()) * scale, seen.size() * scale));
    return node;
}

qreal bounded(qreal value, qreal lowest, qreal highest)
{
    return std::isnan(value) ? lowest : std::clamp(value, lowest, highest);
}

void setEvenStops(QGradient &gradient, const QList<QColor> &colors)
{
    QGradientStops stops;
    for (const QColor &color : colors) {
        if (color.isValid())
            stops.append({0, color});
    }
    if (stops.isEmpty())
        stops.append({0, QColor(Qt::transparent)});
    for (qsizetype i = 1; i < stops.size(); ++i)
        stops[i].first = static_cast<qreal>(i) / static_cast<qreal>(stops.size() - 1);
    gradient.setStops(stops);
}

} // namespace talvenor
