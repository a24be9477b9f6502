#pragma once

#include <functional>

namespace talvenor {

/// Whether the user lets the program use something. The values are also log and test vocabulary.
enum class AuthorizationStatus { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

/// The system's answer to whether the microphone and speech recognition may be used. Main thread.
class Authorization
{
public:
    Authorization() = default;
    Authorization(const Authorization &) = delete;
    Authorization &operator=(const Authorization &) = delete;
    virtual ~Authorization() = default;

    [[nodiscard]] virtual AuthorizationStatus microphoneStatus() = 0;
    /// Asks the user; the answer may come on any thread.
    virtual void requestMicrophoneAccess(std::function<void(bool granted)> answer) = 0;

    [[nodiscard]] virtual AuthorizationStatus speechStatus() = 0;
    /// Asks the user where that is still open; the answer may come on any thread.
    virtual void requestSpeechAuthorization(std::function<void(AuthorizationStatus)> answer) = 0;
};

} // namespace talvenor
