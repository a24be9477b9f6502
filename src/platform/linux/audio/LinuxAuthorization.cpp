#include "platform/linux/audio/LinuxAuthorization.h"

namespace talvenor {

AuthorizationStatus LinuxAuthorization::microphoneStatus()
{
    return AuthorizationStatus::authorized;
}

void LinuxAuthorization::requestMicrophoneAccess(std::function<void(bool granted)> answer)
{
    answer(true);
}

AuthorizationStatus LinuxAuthorization::speechStatus()
{
    return AuthorizationStatus::authorized;
}

void LinuxAuthorization::requestSpeechAuthorization(std::function<void(AuthorizationStatus)> answer)
{
    answer(AuthorizationStatus::authorized);
}

} // namespace talvenor
