#pragma once

#include "screens/paint/PaintedItem.h"

#include <QPointF>

namespace talvenor {

/// A glow: full colour out to the start radius, from there fading evenly, to clear at the end radius and
/// beyond.
///
/// The item cuts it off at its bounds. Only the glow itself is a picture, and a change of the item's size
/// moves it without painting, so that it can lie behind a whole window. To make it breathe, animate the
/// item's opacity rather than the colour.
// The base's whole name: the tool that describes the types to qmllint finds no other.
class RadialFill : public talvenor::PaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    /// The centre, as fractions of the item's width and height.
    Q_PROPERTY(QPointF center MEMBER m_center NOTIFY moved)
    /// Logical pixels.
    Q_PROPERTY(qreal startRadius MEMBER m_startRadius NOTIFY changed)
    Q_PROPERTY(qreal endRadius MEMBER m_endRadius NOTIFY changed)

public:
    explicit RadialFill(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void changed();
    void moved();

protected:
    [[nodiscard]] QRectF pictureArea() const override;
    [[nodiscard]] QRectF visibleArea() const override { return boundingRect(); }
    [[nodiscard]] qreal pictureScale(qreal displayScale) const override;
    [[nodiscard]] bool dependsOnSize() const override { return false; }
    void paintPicture(QPainter &painter) const override;

private:
    [[nodiscard]] QPointF centerPoint() const;

    QColor m_color;
    QPointF m_center{0.5, 0.5};
    qreal m_startRadius = 0;
    qreal m_endRadius = 0;
};

} // namespace talvenor
