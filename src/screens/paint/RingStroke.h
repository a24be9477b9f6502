#pragma once

#include "screens/paint/PaintedItem.h"

namespace talvenor {

/// A circle, or the first part of one, drawn as a line on the circle that fits into the item; half of the
/// line's width lies outside.
///
/// It begins at the right and runs clockwise, and so do its colours, which are spread evenly over the whole
/// circumference, however little of it is drawn. Turn it with `rotation`, which paints nothing.
// The base's whole name: the tool that describes the types to qmllint finds no other.
class RingStroke : public talvenor::PaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    /// One for a plain line, more for an angular gradient. What is no colour is left out.
    Q_PROPERTY(QVariantList colors READ colors WRITE setColors NOTIFY changed)
    /// Logical pixels.
    Q_PROPERTY(qreal lineWidth MEMBER m_lineWidth NOTIFY changed)
    /// How much of the circumference is drawn, 0 to 1.
    Q_PROPERTY(qreal fraction MEMBER m_fraction NOTIFY changed)
    Q_PROPERTY(bool hasRoundCaps MEMBER m_hasRoundCaps NOTIFY changed)

public:
    explicit RingStroke(QQuickItem *parent = nullptr);

    [[nodiscard]] QVariantList colors() const;
    void setColors(const QVariantList &colors);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] QRectF pictureArea() const override;
    void paintPicture(QPainter &painter) const override;

private:
    [[nodiscard]] QRectF circle() const;

    QList<QColor> m_colors;
    qreal m_lineWidth = 1;
    qreal m_fraction = 1;
    bool m_hasRoundCaps = false;
};

} // namespace talvenor
