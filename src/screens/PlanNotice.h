#pragma once

#include "service/UserProfile.h"
#include "settings/AppLanguage.h"

namespace talvenor {

/// What the record screen tells a user about the plan. Without a user there is nothing to tell.
struct PlanNotice
{
    /// The banner that advertises the paid plans, for free accounts.
    bool hasBanner = false;
    /// The line with the month's usage, for all but the premium tier, whatever the role.
    bool hasUsageLine = false;
    /// At most one recording is left by `recordingsRemaining`, which does not know of the limit of 25 below.
    bool isWarning = false;
    /// The usage line has the button that leads to the plans: a free account's warning.
    bool offersUpgrade = false;
    /// "2/3 recordings this month": the count, then the limit, which is the profile's, else 25 for a basic
    /// account and 3 for any other.
    QString usage;

    [[nodiscard]] static PlanNotice of(const std::optional<UserProfile> &user, AppLanguage language);

    friend bool operator==(const PlanNotice &, const PlanNotice &) = default;
};

} // namespace talvenor
