#include "screens/PlanNotice.h"

namespace talvenor {

PlanNotice PlanNotice::of(const std::optional<UserProfile> &user, AppLanguage language)
{
    PlanNotice notice;
    if (!user)
        return notice;
    notice.hasBanner = user->isFree();
    notice.hasUsageLine = !user->isPremium();
    notice.isWarning = user->recordingsRemaining() <= 1;
    notice.offersUpgrade = notice.isWarning && user->isFree();
    const qint64 limit = user->recordings_limit.value_or(user->isBasic() ? 25 : 3);
    notice.usage = QString::number(user->recordings_count) + u'/' + QString::number(limit) +
                   (language == AppLanguage::german ? QStringLiteral(" Aufnahmen diesen Monat")
                                                    : QStringLiteral(" recordings this month"));
    return notice;
}

} // namespace talvenor
