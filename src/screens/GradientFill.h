#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace talvenor {

/// A rounded rectangle filled from its top left corner to its bottom right one, or from left to right; smooth
/// at its edges on every backend, which plain rectangles with gradients are not.
class GradientFill : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor startColor MEMBER m_startColor NOTIFY changed)
    Q_PROPERTY(QColor endColor MEMBER m_endColor NOTIFY changed)
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY changed)
    Q_PROPERTY(bool isDiagonal MEMBER m_isDiagonal NOTIFY changed)

public:
    explicit GradientFill(QQuickItem *parent = nullptr);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void changed();

private:
    QColor m_startColor;
    QColor m_endColor;
    qreal m_radius = 0; ///< logical pixels; more than half of the smaller side is that half
    bool m_isDiagonal = false;
};

} // namespace talvenor
