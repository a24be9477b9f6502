#include "service/SubscriptionTier.h"

namespace talvenor {

QString tierDisplayName(QStringView tier)
{
    if (tier == kTierLifetime)
        return QStringLiteral("Lifetime");
    if (tier == kTierPremium)
        return QStringLiteral("Premium");
    if (tier == kTierBasic)
        return QStringLiteral("Basic");
    return QStringLiteral("Free");
}

} // namespace talvenor
