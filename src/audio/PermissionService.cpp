#include "audio/PermissionService.h"

#include "platform/Platform.h"

#include <utility>

namespace talvenor {

PermissionService &PermissionService::shared()
{
    static PermissionService instance;
    return instance;
}

Task<> PermissionService::requestAllPermissions()
{
    co_await requestMicrophone();
    co_await requestSpeechRecognition();
    if (!std::exchange(m_allPermissionsChecked, true))
        Q_EMIT allPermissionsCheckedChanged();
}

Task<> PermissionService::requestMicrophone()
{
    const std::shared_ptr<Authorization> authorization = Platform::shared().authorization;
    switch (authorization->microphoneStatus()) {
    case AuthorizationStatus::authorized:
        setMicrophoneGranted(true);
        break;
    case AuthorizationStatus::notDetermined: {
        const OneShot<bool> answer;
        authorization->requestMicrophoneAccess(
            [answer](bool granted) { static_cast<void>(answer.resume(granted)); }); // only the first counts
        setMicrophoneGranted(co_await answer);
        break;
    }
    case AuthorizationStatus::denied:
    case AuthorizationStatus::restricted:
        setMicrophoneGranted(false);
        break;
    }
}

Task<> PermissionService::requestSpeechRecognition()
{
    const std::shared_ptr<Authorization> authorization = Platform::shared().authorization;
    switch (authorization->speechStatus()) {
    case AuthorizationStatus::authorized:
        setSpeechGranted(true);
        break;
    case AuthorizationStatus::notDetermined: {
        const OneShot<void> answer;
        authorization->requestSpeechAuthorization([this, answer](AuthorizationStatus status) {
            startTask(this, [this, status]() -> Task<> {
                setSpeechGranted(status == AuthorizationStatus::authorized);
                co_return;
            });
            static_cast<void>(answer.resume()); // only the first answer counts
        });
        co_await answer;
        break;
    }
    case AuthorizationStatus::denied:
    case AuthorizationStatus::restricted:
        setSpeechGranted(false);
        break;
    }
}

Task<> PermissionService::checkScreenCapture()
{
    bool granted = false;
    try {
        static_cast<void>(co_await Platform::shared().shareableContent()); // that it answers is the answer
        granted = true;
    } catch (...) {
        granted = false; // whatever the reason
    }
    setScreenCaptureGranted(granted);
}

void PermissionService::setMicrophoneGranted(bool granted)
{
    if (std::exchange(m_microphoneGranted, granted) != granted)
        Q_EMIT microphoneGrantedChanged();
}

void PermissionService::setSpeechGranted(bool granted)
{
    if (std::exchange(m_speechGranted, granted) != granted)
        Q_EMIT speechGrantedChanged();
}

void PermissionService::setScreenCaptureGranted(bool granted)
{
    if (std::exchange(m_screenCaptureGranted, granted) != granted)
        Q_EMIT screenCaptureGrantedChanged();
}

} // namespace talvenor
