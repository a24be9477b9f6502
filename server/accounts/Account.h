#pragma once

#include "server/common/Time.h"
#include "server/plans/Plan.h"

#include <cstdint>
#include <optional>
#include <string>

namespace talvenor::server {

/// One person's account, as it is kept.
struct Account
{
    std::int64_t id = 0;
    std::string email; ///< normalised, see normalisedEmail()
    std::string name;
    std::string passwordHash; ///< the text form of libsodium, with its parameters and salt
    Role role = Role::user;
    Tier tier = Tier::free;
    std::optional<TimePoint> expiry; ///< end of the paid period; absent means that it does not end
    TimePoint created;

    /// The tier that counts at `now`: an expired one is free.
    [[nodiscard]] Tier effectiveTier(TimePoint now) const
    {
        return expiry && *expiry <= now ? Tier::free : tier;
    }
};

/// One recording that a client has reported.
struct LoggedRecording
{
    std::string title;
    double duration = 0; ///< seconds, not negative
    TimePoint recorded;
};

} // namespace talvenor::server
