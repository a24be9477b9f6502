#pragma once

#include "screens/paint/PaintedItem.h"

#include <QElapsedTimer>

namespace talvenor {

/// What turns around the record button while it records: two arcs that go opposite ways, and a circle that
/// widens with the input level. All three are centred in the item.
///
/// They are one picture, painted anew for each rotation: that costs a fraction of turning finished pictures,
/// of which each pixel would have to be computed. A new level is come to within a tenth of a second, seen as
/// the rings turn.
// The base's whole name, for the tool that describes the types to qmllint.
class RecordingRings : public talvenor::PaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    /// Degrees, clockwise.
    Q_PROPERTY(double ringRotation MEMBER m_ringRotation NOTIFY changed)
    /// 0 to 1.
    Q_PROPERTY(double audioLevel READ audioLevel WRITE setAudioLevel NOTIFY audioLevelChanged)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    /// The disc that they lie around, logical pixels.
    Q_PROPERTY(double buttonSize MEMBER m_buttonSize NOTIFY changed)

public:
    /// Milliseconds.
    static constexpr int levelDuration = 100;

    explicit RecordingRings(QQuickItem *parent = nullptr);

    [[nodiscard]] double audioLevel() const { return m_audioLevel; }
    void setAudioLevel(double level);

Q_SIGNALS:
    void changed();
    void audioLevelChanged();

protected:
    [[nodiscard]] QRectF pictureArea() const override;
    void paintPicture(QPainter &painter) const override;

private:
    /// An arc from `rotation` on with round caps, clear at both ends of the whole circle and strongest
    /// opposite them; a whole circle is equally strong everywhere.
    struct Arc
    {
        double diameter;
        double lineWidth;
        double fraction;
        double opacity;
        double rotation;
    };

    void drawArc(QImage &image, const QTransform &toPoints, const Arc &arc) const;
    [[nodiscard]] double shownLevel() const;

    double m_ringRotation = 0;
    double m_audioLevel = 0;
    double m_previousLevel = 0;
    QElapsedTimer m_sinceChange;
    QColor m_color;
    double m_buttonSize = 140;
};

} // namespace talvenor
