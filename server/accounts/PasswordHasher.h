#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace talvenor::server {

/// What one Argon2id hash costs.
struct PasswordCost
{
    std::uint64_t passes; ///< libsodium's opslimit
    std::size_t memory;   ///< bytes
};

/// Argon2id by libsodium (RFC 9106 tells the method). Callable from any thread; each call takes the
/// processor and the memory of its cost, so not from a thread that serves connections.
class PasswordHasher
{
public:
    /// libsodium's cost for interactive use: 2 passes over 64 MiB.
    PasswordHasher();
    explicit PasswordHasher(PasswordCost cost);

    /// A salted hash with its parameters, as text. Throws std::bad_alloc without the memory for it.
    [[nodiscard]] std::string hash(const std::string &password) const;
    /// True if `password` made `hash`.
    [[nodiscard]] bool matches(const std::string &hash, const std::string &password) const;
    /// Takes the time of matches() and says no; for an address that has no account, so that the time that an
    /// answer takes does not tell.
    [[nodiscard]] bool matchesNothing(const std::string &password) const;

private:
    PasswordCost m_cost;
    std::string m_decoy; ///< the hash of a password that nobody has
};

} // namespace talvenor::server
