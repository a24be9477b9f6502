#pragma once

#include "recorder/RecorderViewModel.h"

#include <QtQml/qqmlregistration.h>

namespace talvenor {

/// The session as the screens show it. Main thread.
class RecordState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes it.")
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
    Q_PROPERTY(QString formattedDuration READ formattedDuration NOTIFY durationChanged)
    Q_PROPERTY(double audioLevel READ audioLevel NOTIFY audioLevelChanged)
    Q_PROPERTY(bool hasSystemAudio READ hasSystemAudio NOTIFY hasSystemAudioChanged)
    Q_PROPERTY(bool isProcessing READ isProcessing NOTIFY isProcessingChanged)
    Q_PROPERTY(QString processingStatus READ processingStatus NOTIFY processingStatusChanged)

public:
    /// `viewModel` outlives this object.
    explicit RecordState(RecorderViewModel &viewModel, QObject *parent = nullptr);

    [[nodiscard]] bool isRecording() const { return m_viewModel.isRecording(); }
    [[nodiscard]] QString formattedDuration() const { return m_viewModel.formattedDuration(); }
    /// 0 to 1.
    [[nodiscard]] double audioLevel() const { return static_cast<double>(m_viewModel.audioLevel()); }
    [[nodiscard]] bool hasSystemAudio() const;
    [[nodiscard]] bool isProcessing() const { return m_viewModel.isProcessing(); }
    [[nodiscard]] QString processingStatus() const { return m_viewModel.processingStatus(); }

    /// The round button: starts or stops.
    Q_INVOKABLE void toggleRecording();
    /// The sidebar's wide button: stops a running session, else brings back the record screen.
    Q_INVOKABLE void stopOrShowRecordScreen();

Q_SIGNALS:
    void isRecordingChanged();
    void durationChanged();
    void audioLevelChanged();
    void hasSystemAudioChanged();
    void isProcessingChanged();
    void processingStatusChanged();

private:
    RecorderViewModel &m_viewModel;
};

} // namespace talvenor
