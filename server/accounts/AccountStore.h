#pragma once

#include "server/accounts/Account.h"
#include "server/accounts/SessionToken.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace talvenor::server {

/// Thrown where an address would stand for two accounts.
class AddressTakenError : public std::runtime_error
{
public:
    AddressTakenError() : std::runtime_error("the address is taken") {}
};

/// Where accounts, their sessions and their recordings are kept. Every operation is whole or not at all,
/// blocks until it is durable, and is callable from any thread. All throw what the database reports.
class AccountStore
{
public:
    virtual ~AccountStore() = default;

    /// Adds an account; its id is given. Throws AddressTakenError.
    virtual Account add(const Account &account) = 0;
    [[nodiscard]] virtual std::optional<Account> withEmail(const std::string &email) = 0;
    [[nodiscard]] virtual std::optional<Account> withToken(const TokenHash &token) = 0;

    /// Opens a session if the account's password is still the one of `passwordHash`: a login that was begun
    /// with an old password must not outlive a change of it. False if it is not. The oldest sessions of an
    /// account that has too many are closed.
    [[nodiscard]] virtual bool addToken(std::int64_t account, const std::string &passwordHash,
                                        const TokenHash &token, TimePoint now) = 0;

    virtual void rename(std::int64_t account, const std::string &name) = 0;
    virtual void setTier(std::int64_t account, Tier tier, std::optional<TimePoint> expiry) = 0;
    virtual void setRole(std::int64_t account, Role role) = 0;
    /// Replaces the password if it is still the one of `oldHash` and closes all sessions but `kept`. False if
    /// the password has changed meanwhile.
    [[nodiscard]] virtual bool changePassword(std::int64_t account, const std::string &oldHash,
                                              const std::string &newHash, const TokenHash &kept) = 0;

    /// Recordings logged at or after `since`.
    [[nodiscard]] virtual std::int64_t recordings(std::int64_t account, TimePoint since) = 0;
    /// Logs a recording unless `limit` recordings are logged since `since` already; false if they are.
    /// Counting and adding are one step, however many ask at once.
    [[nodiscard]] virtual bool addRecording(std::int64_t account, const LoggedRecording &recording,
                                            TimePoint since, std::optional<std::int64_t> limit) = 0;
};

} // namespace talvenor::server
