#include "service/AuthService.h"

#include "service/APIService.h"
#include "service/SubscriptionTier.h"

#include <QPointer>
#include <QScopeGuard>

#include <utility>

namespace talvenor {

AuthService &AuthService::shared()
{
    static AuthService instance(APIService::shared());
    return instance;
}

AuthService::AuthService(APIService &api) : m_api(api), m_isLoggedIn(api.isLoggedIn())
{
    if (m_isLoggedIn)
        startTask(this, [this] { return refreshProfile(); });
}

bool AuthService::canRecord() const
{
    if (!m_currentUser)
        return false;
    const UserProfile &user = *m_currentUser;
    if (user.can_record)
        return *user.can_record;
    if (user.isAdmin() || user.isPremium() || user.isLifetime())
        return true;
    // Not the limit that UserProfile::recordingsRemaining shows: here the plan counts.
    const qint64 limit = user.recordings_limit.value_or(user.isBasic() ? 25 : 3);
    return user.recordings_count < limit;
}

bool AuthService::isAdmin() const
{
    return m_currentUser && m_currentUser->isAdmin();
}

bool AuthService::isPremium() const
{
    return m_currentUser && m_currentUser->isPremium();
}

bool AuthService::hasPaidPlan() const
{
    return m_currentUser && m_currentUser->hasPaidPlan();
}

bool AuthService::canUseSummary() const
{
    return hasPaidPlan();
}

bool AuthService::canExport() const
{
    return hasPaidPlan();
}

QString AuthService::subscriptionTier() const
{
    return m_currentUser ? m_currentUser->subscription_tier : kTierFree.toString();
}

Task<> AuthService::login(QString email, QString password)
{
    return signIn([this, email = std::move(email), password = std::move(password)] {
        return m_api.login(email, password);
    });
}

Task<> AuthService::register_(QString email, QString password, QString name)
{
    return signIn([this, email = std::move(email), password = std::move(password), name = std::move(name)] {
        return m_api.register_(email, password, name);
    });
}

Task<> AuthService::signIn(std::function<Task<AuthResponse>()> send)
{
    const QPointer<AuthService> self(this);
    setIsLoading(true);
    const auto done = qScopeGuard([self] {
        if (self)
            self->setIsLoading(false);
    });
    const AuthResponse response = co_await send();
    if (!self)
        co_return;
    setCurrentUser(response.user);
    setIsLoggedIn(true);
    co_await refreshProfile();
}

void AuthService::logout()
{
    m_api.logout();
    setCurrentUser(std::nullopt);
    setIsLoggedIn(false);
}

Task<> AuthService::refreshProfile()
{
    const QPointer<AuthService> self(this);
    try {
        const UserProfile profile = co_await m_api.fetchProfile();
        if (!self)
            co_return;
        setCurrentUser(profile);
        setIsLoggedIn(true);
    } catch (const APIError &error) {
        // A revoked session ends; all other refusals may pass, so they change nothing and nobody is told.
        if (self && error.errorCase() == APIError::Case::unauthorized)
            logout();
    } catch (const std::exception &) {
        // No answer came: the session stays believed, as after any passing failure.
    }
}

QVariant AuthService::currentUserVariant() const
{
    return m_currentUser ? QVariant::fromValue(*m_currentUser) : QVariant();
}

void AuthService::setIsLoggedIn(bool isLoggedIn)
{
    if (std::exchange(m_isLoggedIn, isLoggedIn) != isLoggedIn)
        Q_EMIT isLoggedInChanged();
}

void AuthService::setCurrentUser(std::optional<UserProfile> user)
{
    if (m_currentUser == user)
        return;
    m_currentUser = std::move(user);
    Q_EMIT currentUserChanged();
}

void AuthService::setIsLoading(bool isLoading)
{
    if (std::exchange(m_isLoading, isLoading) != isLoading)
        Q_EMIT isLoadingChanged();
}

} // namespace talvenor
