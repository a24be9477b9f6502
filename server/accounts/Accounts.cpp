#include "server/accounts/Accounts.h"

#include "server/accounts/EmailAddress.h"
#include "server/common/Refusal.h"

#include <algorithm>

namespace talvenor::server {

namespace {

constexpr std::size_t shortestPassword = 6;   ///< characters
constexpr std::size_t longestPassword = 1024; ///< bytes
constexpr std::size_t longestName = 400;      ///< bytes

/// Characters of a UTF-8 text: the bytes that begin one.
std::size_t characters(const std::string &text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char character) {
        return (static_cast<unsigned char>(character) & 0xC0U) != 0x80U;
    }));
}

std::string requireEmail(const std::string &text)
{
    auto email = normalisedEmail(text);
    if (!email)
        throw Refusal(Reason::invalidAddress);
    return *std::move(email);
}

void requirePassword(const std::string &password)
{
    if (characters(password) < shortestPassword)
        throw Refusal(Reason::passwordTooShort);
    if (password.size() > longestPassword)
        throw Refusal(Reason::passwordTooLong);
}

/// The name without blanks around it; refuses one that is empty, long or holds control characters.
std::string requireName(const std::string &text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string::npos)
        throw Refusal(Reason::nameInvalid);
    std::string name = text.substr(begin, text.find_last_not_of(' ') - begin + 1);
    const bool hasControl = std::any_of(name.begin(), name.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte < 0x20 || byte == 0x7f;
    });
    if (name.size() > longestName || hasControl)
        throw Refusal(Reason::nameInvalid);
    return name;
}

} // namespace

Accounts::Accounts(AccountStore &store, const PasswordHasher &hasher, LoginLimits limits, Clock clock)
    : m_store(store), m_hasher(hasher), m_limiter(limits, clock), m_clock(clock)
{
}

Session Accounts::registerAccount(const std::string &email, const std::string &password,
                                  const std::string &name)
{
    return open(create(email, password, name, Tier::free, Role::user));
}

Session Accounts::login(const std::string &email, const std::string &password, const std::string &address)
{
    const auto normalised = normalisedEmail(email);
    if (!normalised || password.size() > longestPassword)
        throw Refusal(Reason::wrongCredentials);
    if (!m_limiter.admit(address, *normalised))
        throw Refusal(Reason::tooManyAttempts);
    const auto account = m_store.withEmail(*normalised);
    const bool matches =
        account ? m_hasher.matches(account->passwordHash, password) : m_hasher.matchesNothing(password);
    if (!matches)
        throw Refusal(Reason::wrongCredentials);
    m_limiter.succeeded(address, *normalised);
    return open(*account);
}

Account Accounts::authenticated(const std::string &token)
{
    auto account = m_store.withToken(tokenHash(token));
    if (!account)
        throw Refusal(Reason::notSignedIn);
    return *std::move(account);
}

Profile Accounts::profile(const Account &account)
{
    const TimePoint now = m_clock();
    Profile profile;
    profile.id = account.id;
    profile.email = account.email;
    profile.name = account.name;
    profile.role = account.role;
    profile.tier = account.effectiveTier(now);
    if (account.expiry && *account.expiry > now)
        profile.expiry = account.expiry;
    profile.recordingsCount = m_store.recordings(account.id, startOfMonth(now));
    profile.recordingsLimit = monthlyRecordings(profile.tier, profile.role);
    profile.canRecord = !profile.recordingsLimit || profile.recordingsCount < *profile.recordingsLimit;
    return profile;
}

Profile Accounts::rename(Account account, const std::string &name)
{
    account.name = requireName(name);
    m_store.rename(account.id, account.name);
    return profile(account);
}

void Accounts::changePassword(const Account &account, const std::string &token,
                              const std::string &currentPassword, const std::string &newPassword,
                              const std::string &address)
{
    requirePassword(newPassword);
    if (currentPassword.size() > longestPassword)
        throw Refusal(Reason::currentPasswordWrong);
    if (!m_limiter.admit(address, account.email))
        throw Refusal(Reason::tooManyAttempts);
    if (!m_hasher.matches(account.passwordHash, currentPassword))
        throw Refusal(Reason::currentPasswordWrong);
    m_limiter.succeeded(address, account.email);
    if (!m_store.changePassword(account.id, account.passwordHash, m_hasher.hash(newPassword),
                                tokenHash(token)))
        throw Refusal(Reason::currentPasswordWrong); // Another change came first.
}

Profile Accounts::logRecording(const Account &account, const std::string &title, double duration)
{
    const TimePoint now = m_clock();
    const auto limit = monthlyRecordings(account.effectiveTier(now), account.role);
    if (!m_store.addRecording(account.id, LoggedRecording{title, duration, now}, startOfMonth(now), limit))
        throw Refusal(Reason::recordingLimitReached);
    return profile(account);
}

void Accounts::requireSummaries(const Account &account) const
{
    if (!includesSummaries(account.effectiveTier(m_clock())))
        throw Refusal(Reason::summaryNotInPlan);
}

Account Accounts::create(const std::string &email, const std::string &password, const std::string &name,
                         Tier tier, Role role)
{
    Account account;
    account.email = requireEmail(email);
    account.name = requireName(name);
    requirePassword(password);
    account.role = role;
    account.tier = tier;
    account.created = m_clock();
    // Asked before the costly hash; the store decides between two at the same time.
    if (m_store.withEmail(account.email))
        throw Refusal(Reason::addressTaken);
    account.passwordHash = m_hasher.hash(password);
    try {
        return m_store.add(account);
    } catch (const AddressTakenError &) {
        throw Refusal(Reason::addressTaken);
    }
}

Account Accounts::update(const std::string &email, std::optional<Tier> tier, std::optional<Role> role)
{
    auto account = m_store.withEmail(requireEmail(email));
    if (!account)
        throw Refusal(Reason::notFound);
    if (tier) {
        m_store.setTier(account->id, *tier, std::nullopt);
        account->tier = *tier;
        account->expiry.reset();
    }
    if (role) {
        m_store.setRole(account->id, *role);
        account->role = *role;
    }
    return *account;
}

Session Accounts::open(const Account &account)
{
    Session session;
    session.token = newSessionToken();
    if (!m_store.addToken(account.id, account.passwordHash, tokenHash(session.token), m_clock()))
        throw Refusal(Reason::wrongCredentials); // The password changed meanwhile.
    session.user = profile(account);
    return session;
}

} // namespace talvenor::server
