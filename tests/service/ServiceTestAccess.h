#pragma once

#include "platform/Platform.h"
#include "service/APIService.h"
#include "service/AuthService.h"

#include <memory>

namespace talvenor {

/// Lets tests have clients and sessions as a program finds them at its start, more than one in a process.
struct ServiceTestAccess
{
    /// Reads `TALVENOR_API_URL` now.
    [[nodiscard]] static std::unique_ptr<APIService> makeAPIService()
    {
        return std::unique_ptr<APIService>(new APIService);
    }

    /// Takes up the session that the token stands for, as at a start.
    [[nodiscard]] static std::unique_ptr<AuthService> makeAuthService(APIService &api)
    {
        return std::unique_ptr<AuthService>(new AuthService(api));
    }
};

namespace test {

/// The stored token as bytes; absent if there is none.
inline std::optional<QByteArray> storedToken()
{
    return Platform::shared().secretStore->load(QStringLiteral("app.talvenor.auth"),
                                                QStringLiteral("authToken"));
}

/// Stores bytes in the token's place.
inline void storeToken(const QByteArray &bytes)
{
    Platform::shared().secretStore->save(QStringLiteral("app.talvenor.auth"), QStringLiteral("authToken"),
                                         bytes);
}

inline void removeToken()
{
    Platform::shared().secretStore->remove(QStringLiteral("app.talvenor.auth"), QStringLiteral("authToken"));
}

} // namespace test
} // namespace talvenor
