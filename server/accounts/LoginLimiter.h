#pragma once

#include "server/common/Time.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>

namespace talvenor::server {

/// How many failed logins are taken, and over what time.
struct LoginLimits
{
    int perAccount = 10;  ///< from one address on one account
    int perAddress = 100; ///< from one address on all accounts together
    std::chrono::milliseconds window = std::chrono::minutes(15);
    std::size_t remembered = 100'000; ///< most entries kept; the oldest go first
};

/// Slows the guessing of passwords. Failures count for an address and for an account at an address, never for
/// an account alone: then anybody could lock its owner out. Callable from any thread.
class LoginLimiter
{
public:
    LoginLimiter(LoginLimits limits, Clock clock);

    /// Counts an attempt before its outcome is known, so that attempts at the same time cannot slip through
    /// together. False if it must be refused.
    [[nodiscard]] bool admit(const std::string &address, const std::string &email);
    /// Takes back what admit() counted, and the account's earlier failures from this address.
    void succeeded(const std::string &address, const std::string &email);

    /// Entries kept at present.
    [[nodiscard]] std::size_t size();

private:
    struct Entry
    {
        int attempts = 0;
        TimePoint end; ///< when the count begins anew
    };
    using Entries = std::map<std::string, Entry>;

    Entry &entry(const std::string &key, TimePoint now);
    void forget(TimePoint now);

    const LoginLimits m_limits;
    const Clock m_clock;
    std::mutex m_lock;
    Entries m_entries; ///< guarded by m_lock
};

} // namespace talvenor::server
