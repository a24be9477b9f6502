#pragma once

#include "platform/Authorization.h"

namespace talvenor {

/// What a native program on Linux may use: there are no prompts, and nobody to ask.
///
/// The sound server lets every program of the user's listen, and recognition runs on this machine. A missing
/// microphone is not a refusal; capture itself reports it.
class LinuxAuthorization final : public Authorization
{
public:
    [[nodiscard]] AuthorizationStatus microphoneStatus() override;
    void requestMicrophoneAccess(std::function<void(bool granted)> answer) override;
    [[nodiscard]] AuthorizationStatus speechStatus() override;
    void requestSpeechAuthorization(std::function<void(AuthorizationStatus)> answer) override;
};

} // namespace talvenor
