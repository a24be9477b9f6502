#pragma once

#include <stdexcept>
#include <string>

namespace talvenor::server {

/// Why a request is not carried out. Each has one HTTP status and one sentence in each language.
enum class Reason {
    malformedRequest,
    malformedJson,
    notAnObject,
    invalidField,
    invalidAddress,
    passwordTooShort,
    passwordTooLong,
    nameInvalid,
    currentPasswordWrong,
    wrongCredentials,
    notSignedIn,
    recordingLimitReached,
    summaryNotInPlan,
    notFound,
    methodNotAllowed,
    addressTaken,
    bodyTooLarge,
    tooManyAttempts,
    headerTooLarge,
    internalError,
    busy,
};

/// A request that is not carried out, thrown by whoever finds out. Never carries a secret.
class Refusal : public std::runtime_error
{
public:
    /// `field` names the key of the request that is meant, where one is.
    explicit Refusal(Reason reason, std::string field = {})
        : std::runtime_error("refused"), m_reason(reason), m_field(std::move(field))
    {
    }

    [[nodiscard]] Reason reason() const { return m_reason; }
    [[nodiscard]] const std::string &field() const { return m_field; }

private:
    Reason m_reason;
    std::string m_field;
};

} // namespace talvenor::server
