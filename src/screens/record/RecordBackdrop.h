#pragma once

#include <QColor>
#include <QImage>
#include <QQuickItem>

namespace talvenor {

/// What lies behind the record screen: the window's colour with two faint glows on it, and over all the
/// material, blended so that dark becomes darker and light becomes lighter.
///
/// The scene graph has no such blending, so the picture is computed here. It covers what the glows reach and
/// is opaque, which spares everything behind it being drawn; beyond the glows all has one colour.
class RecordBackdrop : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor windowColor MEMBER m_windowColor NOTIFY changed)
    /// The glow around (0.35, 0.38) of the size, from radius 40 to 360; its opacity is in the colour.
    Q_PROPERTY(QColor firstGlow MEMBER m_firstGlow NOTIFY changed)
    /// The glow around (0.68, 0.62), from radius 30 to 320.
    Q_PROPERTY(QColor secondGlow MEMBER m_secondGlow NOTIFY changed)
    /// With its opacity. It is blended in overlay mode, as defined by W3C's "Compositing and Blending".
    Q_PROPERTY(QColor material MEMBER m_material NOTIFY changed)

public:
    explicit RecordBackdrop(QQuickItem *parent = nullptr);

    /// The colour at a place of the item.
    [[nodiscard]] QColor colorAt(const QPointF &place) const;

Q_SIGNALS:
    void changed();

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;
    QSGNode *updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *data) override;

private:
    struct Mixture;

    [[nodiscard]] Mixture mixture() const;
    void repaint();
    [[nodiscard]] QImage picture(const QRect &pixels, double scale) const;

    QColor m_windowColor;
    QColor m_firstGlow;
    QColor m_secondGlow;
    QColor m_material;
    bool m_isStale = true;
};

} // namespace talvenor
