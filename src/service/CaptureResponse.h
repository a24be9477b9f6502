#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>

namespace talvenor {

/// The outcome of taking an approved payment.
struct CaptureResponse
{
    bool success = false;
    std::optional<QString> subscription_tier;
    std::optional<QString> expires_at; ///< ISO 8601

    /// Throws DecodingFailure unless all that is required is there with the right type. Any thread.
    [[nodiscard]] static CaptureResponse fromJson(const QJsonValue &json);
    /// What is absent is left out.
    [[nodiscard]] QJsonObject toJson() const;

    friend bool operator==(const CaptureResponse &, const CaptureResponse &) = default;
};

} // namespace talvenor
