#include "screens/RecordState.h"

namespace talvenor {

RecordState::RecordState(RecorderViewModel &viewModel, QObject *parent)
    : QObject(parent), m_viewModel(viewModel)
{
    connect(&viewModel, &RecorderViewModel::isRecordingChanged, this, &RecordState::isRecordingChanged);
    connect(&viewModel, &RecorderViewModel::recordingDurationChanged, this, &RecordState::durationChanged);
    connect(&viewModel, &RecorderViewModel::audioLevelChanged, this, &RecordState::audioLevelChanged);
    connect(&viewModel, &RecorderViewModel::isProcessingChanged, this, &RecordState::isProcessingChanged);
    connect(&viewModel, &RecorderViewModel::processingStatusChanged, this,
            &RecordState::processingStatusChanged);
    connect(&viewModel.audioCaptureService(), &AudioCaptureService::hasSystemAudioChanged, this,
            &RecordState::hasSystemAudioChanged);
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
