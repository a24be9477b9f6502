#include "screens/paint/Symbol.h"

#include "screens/paint/SymbolImages.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include <cmath>

namespace talvenor {

Symbol::Symbol(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    const int box = SymbolImages::boxForFontSize(m_fontSize);
    setImplicitSize(box, box);
}

double Symbol::strokeWeight(Weight weight)
{
    switch (weight) {
    case Light:
        return 0.7;
    case Regular:
        return 1;
    case Medium:
        return 1.15;
    case Semibold:
        return 1.3;
    case Bold:
        return 1.5;
    }
    return 1; // a number from QML that stands for no weight
}

template<typename Value>
void Symbol::assign(Value &member, const Value &value, void (Symbol::*changed)())
{
    if (member == value)
        return;
    member = value;
    polish();
    Q_EMIT(this->*changed)();
}

void Symbol::setName(const QString &name)
{
    assign(m_name, name, &Symbol::nameChanged);
    updateAnimation();
}

void Symbol::setFontSize(qreal size)
{
    const int box = SymbolImages::boxForFontSize(size);
    setImplicitSize(box, box);
    assign(m_fontSize, size, &Symbol::fontSizeChanged);
}

void Symbol::setWeight(Weight weight)
{
    assign(m_weight, weight, &Symbol::weightChanged);
}

void Symbol::setColor(const QColor &color)
{
    assign(m_color, color, &Symbol::colorChanged);
}

void Symbol::setGradientStart(const QColor &color)
{
    assign(m_gradientStart, color, &Symbol::gradientStartChanged);
}

void Symbol::setGradientEnd(const QColor &color)
{
    assign(m_gradientEnd, color, &Symbol::gradientEndChanged);
}

void Symbol::setIsDiagonal(bool isDiagonal)
{
    assign(m_isDiagonal, isDiagonal, &Symbol::isDiagonalChanged);
}

void Symbol::setIsRunning(bool isRunning)
{
    assign(m_isRunning, isRunning, &Symbol::isRunningChanged);
    updateAnimation();
}

void Symbol::componentComplete()
{
    QQuickItem::componentComplete();
    updateAnimation();
}

void Symbol::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    update();
}

void Symbol::itemChange(ItemChange change, const ItemChangeData &data)
{
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange) {
        followWindow(data.window);
        polish();
    } else if (change == ItemVisibleHasChanged) {
        updateAnimation();
    } else if (change == ItemDevicePixelRatioHasChanged) {
        polish();
    }
}

void Symbol::followWindow(QQuickWindow *window)
{
    disconnect(m_window);
    if (window && m_isRunning)
        m_window = connect(window, &QWindow::visibilityChanged, this, &Symbol::updateAnimation);
    updateAnimation();
}

void Symbol::updateAnimation()
{
    if (m_isRunning && window() && !m_window)
        m_window = connect(window(), &QWindow::visibilityChanged, this, &Symbol::updateAnimation);
    const bool canRun = m_isRunning && isComponentComplete() && SymbolImages::shared().layerCount(m_name) > 0;
    const bool isSeen =
        isVisible() && window() && window()->isVisible() && window()->visibility() != QWindow::Minimized;
    if (canRun && isSeen) {
        if (!m_timer) {
            m_timer = std::make_unique<QTimer>();
            connect(m_timer.get(), &QTimer::timeout, this, &Symbol::lightNextLayer);
        }
        if (!m_timer->isActive()) {
            m_timer->start(cycleDuration / SymbolImages::shared().layerCount(m_name));
            lightNextLayer();
        }
        return;
    }
    if (m_timer)
        m_timer->stop();
    if (!canRun && m_litLayer != 0) {
        m_litLayer = 0;
        polish();
    }
}

void Symbol::lightNextLayer()
{
    if (!isOnScreen())
        return;
    m_litLayer = m_litLayer % SymbolImages::shared().layerCount(m_name) + 1;
    polish();
}

/// False while the item is faded out or scrolled out of what its ancestors and the window show.
bool Symbol::isOnScreen() const
{
    QRectF seen = mapRectToScene(boundingRect()) & QRectF(QPointF(), window()->size());
    for (const QQuickItem *ancestor = this; ancestor && !seen.isEmpty(); ancestor = ancestor->parentItem()) {
        if (!(ancestor->opacity() > 0))
            return false;
        if (ancestor->clip())
            seen &= ancestor->mapRectToScene(ancestor->clipRect());
    }
    return !seen.isEmpty();
}

void Symbol::updatePolish()
{
    SymbolLook look;
    look.name = m_name;
    look.box = SymbolImages::boxForFontSize(m_fontSize);
    look.devicePixelRatio = window() ? window()->effectiveDevicePixelRatio() : 1;
    look.strokeWeight = strokeWeight(m_weight);
    if (m_gradientStart.isValid() && m_gradientEnd.isValid()) {
        look.startColor = m_gradientStart;
        look.endColor = m_gradientEnd;
        look.isDiagonal = m_isDiagonal;
    } else {
        look.startColor = m_color;
    }
    look.litLayer = m_litLayer;
    m_image = SymbolImages::shared().image(look);
    update();
}

/// Where the picture stands in the item, so that its pixels fall on those of the screen.
QRectF Symbol::imageRect() const
{
    const qreal ratio = m_image.devicePixelRatio();
    const QSizeF size = m_image.deviceIndependentSize();
    QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
    if (ratio != std::floor(ratio)) {
        // Whole logical pixels lie between device pixels here.
        const QPointF inScene = mapToScene(corner) * ratio;
        corner = mapFromScene(QPointF(std::round(inScene.x()), std::round(inScene.y())) / ratio);
    } else {
        corner = QPointF(std::floor(corner.x() * ratio) / ratio, std::floor(corner.y() * ratio) / ratio);
    }
    return {corner, size};
}

QSGNode *Symbol::updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *)
{
    if (m_image.isNull()) {
        delete oldNode;
        return nullptr;
    }
    auto *node = static_cast<QSGImageNode *>(oldNode);
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Linear);
        m_shownImage = 0;
    }
    if (m_shownImage != m_image.cacheKey()) {
        node->setTexture(window()->createTextureFromImage(m_image, QQuickWindow::TextureCanUseAtlas));
        m_shownImage = m_image.cacheKey();
    }
    node->setRect(imageRect());
    return node;
}

} // namespace talvenor
