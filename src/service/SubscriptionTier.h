#pragma once

#include <QString>

namespace talvenor {

// The plans and roles that the service names. Texts are compared exactly, case included.

inline constexpr QStringView kTierFree = u"free";
inline constexpr QStringView kTierBasic = u"basic";
inline constexpr QStringView kTierPremium = u"premium";
inline constexpr QStringView kTierLifetime = u"lifetime";

inline constexpr QStringView kRoleAdmin = u"admin";

/// A plan's name for the user, the same in both languages; "Free" for every unknown plan.
[[nodiscard]] QString tierDisplayName(QStringView tier);

} // namespace talvenor
