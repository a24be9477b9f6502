#pragma once

#include "screens/AudioLevels.h"
#include "screens/record/ScreenPresence.h"
#include "screens/record/WaveformShape.h"

#include <QColor>
#include <QElapsedTimer>
#include <QImage>
#include <QQuickItem>
#include <QTimer>

namespace talvenor {

/// Recent input levels as a row of bars over the item's width, as WaveformShape gives them.
///
/// When the number of levels changes, a motion runs across the bars; while it stays the same, as it does once
/// the history is full, new levels are shown as they come. Each bar fades from the lower colour to the upper
/// one. The bars are one picture, drawn pixel by pixel, which is many times faster than 48 gradients. Main
/// thread.
///
/// For assistive technology it can be asked for the level like a progress bar. It sends out no changes of
/// that: they would be read aloud all the time.
class AudioWaveform : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(talvenor::AudioLevels levels READ levels WRITE setLevels NOTIFY levelsChanged)
    Q_PROPERTY(bool isRecording READ isRecording WRITE setIsRecording NOTIFY isRecordingChanged)
    Q_PROPERTY(QColor lowerColor MEMBER m_lowerColor NOTIFY colorsChanged)
    Q_PROPERTY(QColor upperColor MEMBER m_upperColor NOTIFY colorsChanged)
    Q_PROPERTY(double minimumValue READ minimumValue CONSTANT)
    Q_PROPERTY(double maximumValue READ maximumValue CONSTANT)
    /// The newest level. It has no signal, see above.
    Q_PROPERTY(double value READ value)

public:
    explicit AudioWaveform(QQuickItem *parent = nullptr);

    [[nodiscard]] AudioLevels levels() const { return m_levels; }
    void setLevels(const AudioLevels &levels);
    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    void setIsRecording(bool isRecording);
    [[nodiscard]] double minimumValue() const { return 0; }
    [[nodiscard]] double maximumValue() const { return 1; }
    [[nodiscard]] double value() const;

    /// Where a bar is to be, in the item's coordinates, once its motion is over.
    [[nodiscard]] QRectF barRect(int index) const;
    [[nodiscard]] bool isOnScreen() const { return m_presence.isOnScreen(); }
    /// True while there is a timer that moves bars.
    [[nodiscard]] bool isMoving() const { return m_timer.isActive(); }

Q_SIGNALS:
    void levelsChanged();
    void isRecordingChanged();
    void colorsChanged();

protected:
    void componentComplete() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    QSGNode *updatePaintNode(QSGNode *oldNode, UpdatePaintNodeData *data) override;

private:
    [[nodiscard]] WaveformMotion::Heights shape() const;
    [[nodiscard]] double leftOf(int index) const;
    [[nodiscard]] double moment() const;
    void setShape(bool isAnimated);
    void step();
    void updateTimer();
    [[nodiscard]] QImage picture(const QRectF &area, double scale) const;

    AudioLevels m_levels;
    bool m_isRecording = false;
    QColor m_lowerColor;
    QColor m_upperColor;
    WaveformMotion m_motion;
    QElapsedTimer m_clock;
    ScreenPresence m_presence;
    QTimer m_timer;
};

} // namespace talvenor
