#pragma once

#include <QColor>
#include <QImage>
#include <QQuickItem>
#include <QTimer>

#include <memory>

namespace talvenor {

/// One of the program's symbols, in one colour or filled with a gradient. Decoration: it is not in the
/// accessibility tree.
///
/// Its implicit size is the square box that belongs to its font size (SymbolImages::boxForFontSize); in a
/// larger item the box stands in the middle. Centred vertically on a line of text of the same font size, it
/// stands centred on the capitals.
class Symbol : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    /// The drawing's name, such as "waveform.slash". Empty draws nothing; so does an unknown name, after a
    /// warning.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    /// The font size of the text that it matches, logical pixels.
    Q_PROPERTY(qreal size READ fontSize WRITE setFontSize NOTIFY fontSizeChanged)
    Q_PROPERTY(Weight weight READ weight WRITE setWeight NOTIFY weightChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    /// The gradient's ends, used instead of the colour once both are set; undefined unsets.
    Q_PROPERTY(QColor gradientStart READ gradientStart WRITE setGradientStart RESET resetGradientStart NOTIFY
                   gradientStartChanged)
    Q_PROPERTY(QColor gradientEnd READ gradientEnd WRITE setGradientEnd RESET resetGradientEnd NOTIFY
                   gradientEndChanged)
    /// The gradient runs from the upper left to the lower right corner, else from left to right.
    Q_PROPERTY(bool isDiagonal READ isDiagonal WRITE setIsDiagonal NOTIFY isDiagonalChanged)
    /// The parts of a symbol that has layers ("waveform") light up one after another, over and over, while
    /// they can be seen.
    Q_PROPERTY(bool isRunning READ isRunning WRITE setIsRunning NOTIFY isRunningChanged)

public:
    enum Weight { Light, Regular, Medium, Semibold, Bold };
    Q_ENUM(Weight)

    /// How long all layers take, in milliseconds.
    static constexpr int cycleDuration = 1200;

    explicit Symbol(QQuickItem *parent = nullptr);

    /// The factor on line widths that a weight stands for.
    [[nodiscard]] static double strokeWeight(Weight weight);

    [[nodiscard]] QString name() const { return m_name; }
    void setName(const QString &name);
    [[nodiscard]] qreal fontSize() const { return m_fontSize; }
    void setFontSize(qreal size);
    [[nodiscard]] Weight weight() const { return m_weight; }
    void setWeight(Weight weight);
    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor &color);
    [[nodiscard]] QColor gradientStart() const { return m_gradientStart; }
    void setGradientStart(const QColor &color);
    void resetGradientStart() { setGradientStart({}); }
    [[nodiscard]] QColor gradientEnd() const { return m_gradientEnd; }
    void setGradientEnd(const QColor &color);
    void resetGradientEnd() { setGradientEnd({}); }
    [[nodiscard]] bool isDiagonal() const { return m_isDiagonal; }
    void setIsDiagonal(bool isDiagonal);
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    void setIsRunning(bool isRunning);

    /// True while the layers are being lit in turn, which takes more than isRunning: layers, and a window on
    /// the screen in which the item is visible.
    [[nodiscard]] bool isAnimating() const { return m_timer && m_timer->isActive(); }

Q_SIGNALS:
    void nameChanged();
    void fontSizeChanged();
    void weightChanged();
    void colorChanged();
    void gradientStartChanged();
    void gradientEndChanged();
    void isDiagonalChanged();
    void isRunningChanged();

protected:
    void componentComplete() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void updatePolish() override;
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override;

private:
    template<typename Value>
    void assign(Value &member, const Value &value, void (Symbol::*changed)());
    void followWindow(QQuickWindow *window);
    void updateAnimation();
    void lightNextLayer();
    bool isOnScreen() const;
    QRectF imageRect() const;

    QString m_name;
    qreal m_fontSize = 15;
    Weight m_weight = Regular;
    QColor m_color = Qt::black;
    QColor m_gradientStart;
    QColor m_gradientEnd;
    bool m_isDiagonal = true;
    bool m_isRunning = false;
    int m_litLayer = 0;               ///< counted from 1; 0 while no layer is singled out
    std::unique_ptr<QTimer> m_timer;  ///< present once the layers have been lit
    QMetaObject::Connection m_window; ///< to the window's visibility
    QImage m_image;                   ///< what is to be shown, fetched before each frame that needs it
    qint64 m_shownImage = 0;          ///< cache key of the image in the scene graph; used while it is in step
};

} // namespace talvenor
