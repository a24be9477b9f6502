#pragma once

#include "recorder/RecorderViewModel.h"
#include "screens/AudioLevels.h"
#include "screens/PlanNotice.h"

#include <QtQml/qqmlregistration.h>

namespace talvenor {

/// The session, and what it costs of the user's plan, as the screens show them. Main thread.
class RecordState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes it.")
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
    Q_PROPERTY(QString formattedDuration READ formattedDuration NOTIFY durationChanged)
    Q_PROPERTY(double audioLevel READ audioLevel NOTIFY audioLevelChanged)
    Q_PROPERTY(talvenor::AudioLevels audioLevels READ audioLevels NOTIFY audioLevelsChanged)
    Q_PROPERTY(bool hasSystemAudio READ hasSystemAudio NOTIFY hasSystemAudioChanged)
    Q_PROPERTY(bool isProcessing READ isProcessing NOTIFY isProcessingChanged)
    Q_PROPERTY(QString processingStatus READ processingStatus NOTIFY processingStatusChanged)
    Q_PROPERTY(bool hasUpgradeBanner READ hasUpgradeBanner NOTIFY planNoticeChanged)
    Q_PROPERTY(bool hasUsageLine READ hasUsageLine NOTIFY planNoticeChanged)
    Q_PROPERTY(bool isUsageWarning READ isUsageWarning NOTIFY planNoticeChanged)
    Q_PROPERTY(bool offersUpgrade READ offersUpgrade NOTIFY planNoticeChanged)
    Q_PROPERTY(QString usage READ usage NOTIFY planNoticeChanged)

public:
    /// `viewModel` outlives this object.
    explicit RecordState(RecorderViewModel &viewModel, QObject *parent = nullptr);

    [[nodiscard]] bool isRecording() const { return m_viewModel.isRecording(); }
    [[nodiscard]] QString formattedDuration() const { return m_viewModel.formattedDuration(); }
    /// 0 to 1.
    [[nodiscard]] double audioLevel() const { return static_cast<double>(m_viewModel.audioLevel()); }
    [[nodiscard]] AudioLevels audioLevels() const { return {m_viewModel.audioLevels()}; }
    [[nodiscard]] bool hasSystemAudio() const;
    [[nodiscard]] bool isProcessing() const { return m_viewModel.isProcessing(); }
    [[nodiscard]] QString processingStatus() const { return m_viewModel.processingStatus(); }

    // What PlanNotice says of the signed-in user, in the language of the application.

    [[nodiscard]] bool hasUpgradeBanner() const { return m_planNotice.hasBanner; }
    [[nodiscard]] bool hasUsageLine() const { return m_planNotice.hasUsageLine; }
    [[nodiscard]] bool isUsageWarning() const { return m_planNotice.isWarning; }
    [[nodiscard]] bool offersUpgrade() const { return m_planNotice.offersUpgrade; }
    [[nodiscard]] QString usage() const { return m_planNotice.usage; }

    /// The round button: starts or stops. It does not ask whether a start is under way.
    Q_INVOKABLE void toggleRecording();
    /// The sidebar's wide button: stops a running session, else brings back the record screen.
    Q_INVOKABLE void stopOrShowRecordScreen();

Q_SIGNALS:
    void isRecordingChanged();
    void durationChanged();
    void audioLevelChanged();
    void audioLevelsChanged();
    void hasSystemAudioChanged();
    void isProcessingChanged();
    void processingStatusChanged();
    void planNoticeChanged();

private:
    void updatePlanNotice();

    RecorderViewModel &m_viewModel;
    PlanNotice m_planNotice;
};

} // namespace talvenor
