#include "server/accounts/LoginLimiter.h"

#include <algorithm>
#include <vector>

namespace talvenor::server {

namespace {

/// Addresses hold no line feed, so the two kinds of keys cannot meet.
std::string pairKey(const std::string &address, const std::string &email)
{
    return address + '\n' + email;
}

} // namespace

LoginLimiter::LoginLimiter(LoginLimits limits, Clock clock) : m_limits(limits), m_clock(std::move(clock))
{
}

bool LoginLimiter::admit(const std::string &address, const std::string &email)
{
    const std::lock_guard guard(m_lock);
    const TimePoint now = m_clock();
    if (m_entries.size() + 2 > m_limits.remembered)
        forget(now);
    Entry &forAddress = entry(address, now);
    Entry &forAccount = entry(pairKey(address, email), now);
    if (forAddress.attempts >= m_limits.perAddress || forAccount.attempts >= m_limits.perAccount)
        return false;
    ++forAddress.attempts;
    ++forAccount.attempts;
    return true;
}

void LoginLimiter::succeeded(const std::string &address, const std::string &email)
{
    const std::lock_guard guard(m_lock);
    m_entries.erase(pairKey(address, email));
    const auto forAddress = m_entries.find(address);
    if (forAddress != m_entries.end() && forAddress->second.attempts > 0)
        --forAddress->second.attempts;
}

std::size_t LoginLimiter::size()
{
    const std::lock_guard guard(m_lock);
    return m_entries.size();
}

LoginLimiter::Entry &LoginLimiter::entry(const std::string &key, TimePoint now)
{
    Entry &entry = m_entries[key];
    if (entry.end <= now)
        entry = Entry{0, now + m_limits.window};
    return entry;
}

void LoginLimiter::forget(TimePoint now)
{
    std::erase_if(m_entries, [now](const auto &each) { return each.second.end <= now; });
    if (m_entries.size() + 2 <= m_limits.remembered)
        return;
    // Under a flood of made-up accounts half of the entries go at once, or each attempt would sort them
    // again.
    std::vector<TimePoint> ends;
    ends.reserve(m_entries.size());
    for (const auto &[key, value] : m_entries)
        ends.push_back(value.end);
    const auto middle = ends.begin() + static_cast<std::ptrdiff_t>(ends.size() / 2);
    std::nth_element(ends.begin(), middle, ends.end());
    std::erase_if(m_entries, [limit = *middle](const auto &each) { return each.second.end <= limit; });
}

} // namespace talvenor::server
