#pragma once

#include "screens/paint/PaintedItem.h"

namespace talvenor {

/// The record button's disc in the item's size: its gradient from corner to corner, the highlight on its
/// upper half, the border inside it, and the two soft shadows below it.
///
/// It is one picture, because each frame of what moves around the disc draws all that lies there again.
// The base's whole name, for the tool that describes the types to qmllint.
class RecordDisc : public talvenor::PaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor startColor MEMBER m_startColor NOTIFY changed)
    Q_PROPERTY(QColor endColor MEMBER m_endColor NOTIFY changed)
    /// 10 pixels below the disc. Colours of shadows have their opacity.
    Q_PROPERTY(QColor shadowColor MEMBER m_shadowColor NOTIFY changed)
    /// Logical pixels; half of it is the standard deviation of the blur.
    Q_PROPERTY(double shadowRadius MEMBER m_shadowRadius NOTIFY changed)
    /// 4 pixels below the disc, with a radius of 60.
    Q_PROPERTY(QColor wideShadowColor MEMBER m_wideShadowColor NOTIFY changed)

public:
    explicit RecordDisc(QQuickItem *parent = nullptr);

    /// How dark the shadow of a disc is at a distance from its centre, 0 to 1: the disc of that radius,
    /// blurred by a Gaussian. All lengths are in the same unit.
    [[nodiscard]] static double shadowStrength(double distance, double radius, double deviation);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] QRectF pictureArea() const override;
    void paintPicture(QPainter &painter) const override;

private:
    struct Shadow
    {
        QColor color;
        double blurRadius;
        double offsetY;
    };

    void paintShadow(QPainter &painter, const Shadow &shadow) const;
    void paintDisc(QPainter &painter) const;

    QColor m_startColor;
    QColor m_endColor;
    QColor m_shadowColor;
    double m_shadowRadius = 0;
    QColor m_wideShadowColor;
};

} // namespace talvenor
