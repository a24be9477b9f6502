#pragma once

#include "foundation/Task.h"
#include "service/AuthResponse.h"

#include <QObject>
#include <QVariant>

#include <functional>
#include <optional>

namespace talvenor {

class APIService;

/// The login session that the whole program observes: whether someone is signed in, who it is, and what
/// that user may do.
///
/// Main thread. The service enforces the same rights again; the ones here only spare the user a request that
/// would be refused. Operations that are under way when an instance goes end without touching it.
class AuthService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isLoggedIn READ isLoggedIn NOTIFY isLoggedInChanged)
    /// A UserProfile, or undefined while none is known.
    Q_PROPERTY(QVariant currentUser READ currentUserVariant NOTIFY currentUserChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(bool canRecord READ canRecord NOTIFY currentUserChanged)
    Q_PROPERTY(bool isAdmin READ isAdmin NOTIFY currentUserChanged)
    Q_PROPERTY(bool isPremium READ isPremium NOTIFY currentUserChanged)
    Q_PROPERTY(bool hasPaidPlan READ hasPaidPlan NOTIFY currentUserChanged)
    Q_PROPERTY(bool canUseSummary READ canUseSummary NOTIFY currentUserChanged)
    Q_PROPERTY(bool canExport READ canExport NOTIFY currentUserChanged)
    Q_PROPERTY(QString subscriptionTier READ subscriptionTier NOTIFY currentUserChanged)

public:
    /// The instance of the process. It comes into being on first use and takes up the session that an
    /// earlier run has left: on trust, with a refresh of the profile under way.
    [[nodiscard]] static AuthService &shared();

    /// A session is believed to exist.
    [[nodiscard]] bool isLoggedIn() const { return m_isLoggedIn; }
    /// The profile last fetched; absent too in a session taken up from an earlier run, until it is fetched.
    [[nodiscard]] const std::optional<UserProfile> &currentUser() const { return m_currentUser; }
    /// A login or registration is running.
    [[nodiscard]] bool isLoading() const { return m_isLoading; }

    // All rights are false while no user is known. An administrator has no paid rights by that alone.
    [[nodiscard]] bool canRecord() const;
    [[nodiscard]] bool isAdmin() const;
    [[nodiscard]] bool isPremium() const;
    [[nodiscard]] bool hasPaidPlan() const;
    [[nodiscard]] bool canUseSummary() const;
    [[nodiscard]] bool canExport() const;
    /// The user's plan, "free" while no user is known.
    [[nodiscard]] QString subscriptionTier() const;

    /// Signs in and fetches the profile; throws what APIService::login throws, and changes nothing then.
    Task<> login(QString email, QString password);
    /// Creates an account and signs in with it; throws what APIService::register_ throws.
    Task<> register_(QString email, QString password, QString name);
    /// Ends the session on this machine. The service is not asked and recordings stay.
    void logout();
    /// Fetches the profile anew. Never throws: a refused session is ended, any other failure changes
    /// nothing.
    Task<> refreshProfile();

Q_SIGNALS:
    void isLoggedInChanged();
    void currentUserChanged();
    void isLoadingChanged();

private:
    explicit AuthService(APIService &api);
    friend struct ServiceTestAccess; ///< tests need more than one instance in a process

    Task<> signIn(std::function<Task<AuthResponse>()> send);
    [[nodiscard]] QVariant currentUserVariant() const;
    void setIsLoggedIn(bool isLoggedIn);
    void setCurrentUser(std::optional<UserProfile> user);
    void setIsLoading(bool isLoading);

    APIService &m_api;
    bool m_isLoggedIn = false;
    std::optional<UserProfile> m_currentUser;
    bool m_isLoading = false;
};

} // namespace talvenor
