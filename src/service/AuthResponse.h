#pragma once

#include "service/UserProfile.h"

namespace talvenor {

/// What a login or a registration gives: the bearer token and the user whom it stands for.
struct AuthResponse
{
    QString token;
    UserProfile user;

    /// Throws DecodingFailure unless all that is required is there with the right type. Any thread.
    [[nodiscard]] static AuthResponse fromJson(const QJsonValue &json);
    [[nodiscard]] QJsonObject toJson() const;

    friend bool operator==(const AuthResponse &, const AuthResponse &) = default;
};

} // namespace talvenor
