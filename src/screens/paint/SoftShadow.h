#pragma once

#include "screens/paint/PaintedItem.h"

namespace talvenor {

/// The blurred shadow of a rounded rectangle of the item's size: put it behind the item that casts it, with
/// the same geometry. It reaches beyond its bounds.
///
/// The blur is a Gaussian whose standard deviation is half of the blur radius, which is what a radius of a
/// shadow means on the web and in design programs. It is computed once for each size, without effects of the
/// scene graph, so that the software backend shows it too.
// The base's whole name: the tool that describes the types to qmllint finds no other.
class SoftShadow : public talvenor::PaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    /// With its opacity.
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    /// Logical pixels.
    Q_PROPERTY(qreal blurRadius MEMBER m_blurRadius NOTIFY changed)
    /// The radius of the shape's corners; half of the smaller side or more gives a capsule or a circle.
    Q_PROPERTY(qreal cornerRadius MEMBER m_cornerRadius NOTIFY changed)
    Q_PROPERTY(qreal offsetX MEMBER m_offsetX NOTIFY changed)
    /// Downwards.
    Q_PROPERTY(qreal offsetY MEMBER m_offsetY NOTIFY changed)

public:
    explicit SoftShadow(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] QRectF pictureArea() const override;
    void paintPicture(QPainter &painter) const override;

private:
    QColor m_color;
    qreal m_blurRadius = 0;
    qreal m_cornerRadius = 0;
    qreal m_offsetX = 0;
    qreal m_offsetY = 0;
};

} // namespace talvenor
