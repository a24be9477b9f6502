#pragma once

#include "server/accounts/AccountStore.h"
#include "server/accounts/LoginLimiter.h"
#include "server/accounts/PasswordHasher.h"
#include "server/common/Time.h"

#include <string>

namespace talvenor::server {

/// What a client learns of its own account.
struct Profile
{
    std::int64_t id = 0;
    std::string email;
    std::string name;
    Role role = Role::user;
    Tier tier = Tier::free;           ///< the effective one
    std::optional<TimePoint> expiry;  ///< end of the paid period, if it is still to come
    std::int64_t recordingsCount = 0; ///< of this calendar month
    std::optional<std::int64_t> recordingsLimit;
    bool canRecord = false;
};

/// A session just opened; the token exists here and with the client only.
struct Session
{
    std::string token;
    Profile user;
};

/// Accounts, their sessions and their monthly recordings: all rules, no HTTP and no SQL.
///
/// Operations block (hashing a password takes some 0.1 seconds) and are callable from any thread. Where an
/// operation is not allowed it throws Refusal.
class Accounts
{
public:
    /// `store` and `hasher` must outlive this.
    Accounts(AccountStore &store, const PasswordHasher &hasher, LoginLimits limits, Clock clock);

    /// Makes an account on the free tier and opens its first session.
    [[nodiscard]] Session registerAccount(const std::string &email, const std::string &password,
                                          const std::string &name);
    /// Opens a session. `address` is where the attempt comes from.
    [[nodiscard]] Session login(const std::string &email, const std::string &password,
                                const std::string &address);

    /// The account of a session. Refuses a token that opens none.
    [[nodiscard]] Account authenticated(const std::string &token);
    [[nodiscard]] Profile profile(const Account &account);
    [[nodiscard]] Profile rename(Account account, const std::string &name);
    /// Closes all sessions of the account but that of `token`. Wrong guesses count like failed logins.
    void changePassword(const Account &account, const std::string &token, const std::string &currentPassword,
                        const std::string &newPassword, const std::string &address);
    /// Logs a recording of this month and gives the profile after it; refuses one beyond the limit.
    [[nodiscard]] Profile logRecording(const Account &account, const std::string &title, double duration);
    /// Refuses an account whose plan holds no summaries.
    void requireSummaries(const Account &account) const;

    /// Makes an account with any tier and role; for the operator.
    Account create(const std::string &email, const std::string &password, const std::string &name, Tier tier,
                   Role role);
    /// Gives an account another tier (without end) or role; for the operator. Refuses an unknown address.
    Account update(const std::string &email, std::optional<Tier> tier, std::optional<Role> role);

private:
    [[nodiscard]] Session open(const Account &account);

    AccountStore &m_store;
    const PasswordHasher &m_hasher;
    LoginLimiter m_limiter;
    const Clock m_clock;
};

} // namespace talvenor::server
