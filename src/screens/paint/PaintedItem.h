#pragma once

#include <QColor>
#include <QList>
#include <QQuickItem>

class QGradient;
class QPainter;

namespace talvenor {

/// An item that shows a picture which it paints once and keeps: smooth at its edges and sharp at every scale
/// of the display, on the software backend as on any other.
///
/// The picture may reach beyond the item's bounds, as a shadow does. It is painted anew when `repaintPicture`
/// is called, when the item's size changes (unless `dependsOnSize` says otherwise), and when the display's
/// scale does; moving, rotating, scaling and fading the item paint nothing. Main thread; the painting itself
/// happens while the scene graph holds the main thread.
class PaintedItem : public QQuickItem
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit PaintedItem(QQuickItem *parent = nullptr);

    /// How often the picture has been painted, for those who watch what an animation costs.
    [[nodiscard]] int paintCount() const { return m_paintCount; }

protected:
    /// What the picture covers, in the item's coordinates; empty for nothing. What is larger than any
    /// display, or has no numbers, is not painted either.
    [[nodiscard]] virtual QRectF pictureArea() const = 0;
    /// Paints the picture in the item's coordinates. Antialiasing is on, and there is no pen.
    virtual void paintPicture(QPainter &painter) const = 0;
    /// What is seen of the picture; by default all.
    [[nodiscard]] virtual QRectF visibleArea() const { return pictureArea(); }
    /// Points of the picture for each logical pixel, on a display of the scale given. A picture without edges
    /// can do with fewer than the display has.
    [[nodiscard]] virtual qreal pictureScale(qreal displayScale) const { return displayScale; }
    /// True if a change of the item's size changes the picture, and not only its place.
    [[nodiscard]] virtual bool dependsOnSize() const { return true; }

    void repaintPicture();

    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;
    QSGNode *updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *data) override;

private:
    [[nodiscard]] QImage picture(const QRectF &area, qreal scale) const;

    bool m_isStale = true;
    int m_paintCount = 0;
};

/// The value within the two bounds; what is no number is the lower one.
[[nodiscard]] qreal bounded(qreal value, qreal lowest, qreal highest);

/// Puts the colours at even distances along a gradient and has them mixed with their opacity, so that a
/// colour that fades to clear keeps its hue. Colours that are not valid are left out; one alone fills all.
void setEvenStops(QGradient &gradient, const QList<QColor> &colors);

} // namespace talvenor
