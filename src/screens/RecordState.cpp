#include "screens/RecordState.h"

#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "settings/L10n.h"

namespace talvenor {

RecordState::RecordState(RecorderViewModel &viewModel, QObject *parent)
    : QObject(parent), m_viewModel(viewModel)
{
    connect(&viewModel, &RecorderViewModel::isRecordingChanged, this, &RecordState::isRecordingChanged);
    connect(&viewModel, &RecorderViewModel::recordingDurationChanged, this, &RecordState::durationChanged);
    connect(&viewModel, &RecorderViewModel::audioLevelChanged, this, &RecordState::audioLevelChanged);
    connect(&viewModel, &RecorderViewModel::audioLevelsChanged, this, &RecordState::audioLevelsChanged);
    connect(&viewModel, &RecorderViewModel::isProcessingChanged, this, &RecordState::isProcessingChanged);
    connect(&viewModel, &RecorderViewModel::processingStatusChanged, this,
            &RecordState::processingStatusChanged);
    connect(&viewModel.audioCaptureService(), &AudioCaptureService::hasSystemAudioChanged, this,
            &RecordState::hasSystemAudioChanged);
    connect(&AuthService::shared(), &AuthService::currentUserChanged, this, &RecordState::updatePlanNotice);
    connect(&AppSettings::shared(), &AppSettings::changed, this, &RecordState::updatePlanNotice);
    updatePlanNotice();
}

void RecordState::updatePlanNotice()
{
    const PlanNotice notice = PlanNotice::of(AuthService::shared().currentUser(), L10n::current());
    if (notice == m_planNotice)
        return;
    m_planNotice = notice;
    Q_EMIT planNoticeChanged();
}

bool RecordState::hasSystemAudio() const
{
    return m_viewModel.audioCaptureService().hasSystemAudio();
}

void RecordState::toggleRecording()
{
    m_viewModel.toggleRecording();
}

void RecordState::stopOrShowRecordScreen()
{
    if (m_viewModel.isRecording())
        m_viewModel.toggleRecording();
    else
        m_viewModel.setSelectedRecording(std::nullopt);
}

} // namespace talvenor
