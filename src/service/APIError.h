#pragma once

#include "foundation/LocalizedError.h"

#include <QString>

namespace talvenor {

/// What went wrong between this program and the hosted service, once the service has been reached.
///
/// Failures to reach it at all are PlatformErrors and pass through the client unchanged.
class APIError : public LocalizedError
{
public:
    enum class Case {
        network = 1,   ///< no usable address, or an answer that was no HTTP
        forbidden,     ///< status 403
        badRequest,    ///< status 400 or 409
        serverError,   ///< any other status without success
        unauthorized,  ///< status 401; no payload
        decodingError, ///< success, but with a body that is not what was asked for; no payload
    };

    [[nodiscard]] static APIError network(QString text) { return {Case::network, std::move(text)}; }
    [[nodiscard]] static APIError forbidden(QString text) { return {Case::forbidden, std::move(text)}; }
    [[nodiscard]] static APIError badRequest(QString text) { return {Case::badRequest, std::move(text)}; }
    [[nodiscard]] static APIError serverError(QString text) { return {Case::serverError, std::move(text)}; }
    [[nodiscard]] static APIError unauthorized() { return {Case::unauthorized, {}}; }
    [[nodiscard]] static APIError decodingError() { return {Case::decodingError, {}}; }

    [[nodiscard]] Case errorCase() const { return m_case; }

    /// The payload as it came, or the case's own sentence in the language set at this moment.
    [[nodiscard]] QString errorDescription() const override;

private:
    APIError(Case errorCase, QString text) : m_case(errorCase), m_text(std::move(text)) {}

    Case m_case;
    QString m_text;
};

} // namespace talvenor
