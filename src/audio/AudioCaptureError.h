#pragma once

#include "foundation/LocalizedError.h"

namespace talvenor {

/// Why capture did not start, in the language of the application.
class AudioCaptureError final : public LocalizedError
{
public:
    enum class Case {
        noAudioInput = 1,
        captureSetupFailed, ///< never raised so far
        permissionDenied,   ///< never raised so far
    };

    explicit AudioCaptureError(Case reason) : m_reason(reason) {}

    [[nodiscard]] Case reason() const { return m_reason; }
    [[nodiscard]] QString errorDescription() const override;

private:
    Case m_reason;
};

} // namespace talvenor
