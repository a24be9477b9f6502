#pragma once

#include "screens/paint/PaintedItem.h"

#include <QPointF>

namespace talvenor {

/// A rounded rectangle filled with a linear gradient, and on wish with a border in a gradient of
/// its own.
///
/// By default the gradient runs from the top left corner to the bottom right one. A radius of half the
/// smaller side or more gives a capsule or a circle. Colours that are not set are not drawn: without any of
/// the fill there is only the border. Colours may be translucent.
// The base's whole name: the tool that describes the types to qmllint finds no other.
class GradientFill : public talvenor::PaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor startColor MEMBER m_startColor NOTIFY changed)
    /// Halfway between the two, where it is set.
    Q_PROPERTY(QColor middleColor MEMBER m_middleColor NOTIFY changed)
    Q_PROPERTY(QColor endColor MEMBER m_endColor NOTIFY changed)
    /// Where the gradient begins and ends, as fractions of the item's width and height.
    Q_PROPERTY(QPointF startPoint MEMBER m_startPoint NOTIFY changed)
    Q_PROPERTY(QPointF endPoint MEMBER m_endPoint NOTIFY changed)
    /// Logical pixels; more than half of the smaller side is that half.
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY changed)
    /// Logical pixels; 0 for no border.
    Q_PROPERTY(qreal borderWidth MEMBER m_borderWidth NOTIFY changed)
    Q_PROPERTY(QColor borderStartColor MEMBER m_borderStartColor NOTIFY changed)
    Q_PROPERTY(QColor borderMiddleColor MEMBER m_borderMiddleColor NOTIFY changed)
    Q_PROPERTY(QColor borderEndColor MEMBER m_borderEndColor NOTIFY changed)
    /// True if the border lies on the shape's outline, half of it outside, false if it lies inside of the
    /// shape.
    Q_PROPERTY(bool isBorderCentered MEMBER m_isBorderCentered NOTIFY changed)
    /// True if the border's gradient runs from top to bottom, false if from left to right.
    Q_PROPERTY(bool isBorderVertical MEMBER m_isBorderVertical NOTIFY changed)

public:
    explicit GradientFill(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] QRectF pictureArea() const override;
    void paintPicture(QPainter &painter) const override;

private:
    void paintFill(QPainter &painter) const;
    void paintBorder(QPainter &painter) const;

    QColor m_startColor;
    QColor m_middleColor;
    QColor m_endColor;
    QPointF m_startPoint{0, 0};
    QPointF m_endPoint{1, 1};
    qreal m_radius = 0;
    qreal m_borderWidth = 0;
    QColor m_borderStartColor;
    QColor m_borderMiddleColor;
    QColor m_borderEndColor;
    bool m_isBorderCentered = false;
    bool m_isBorderVertical = false;
};

} // namespace talvenor
