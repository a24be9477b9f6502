#include "server/accounts/PasswordHasher.h"

#include "server/accounts/SessionToken.h"

#include <sodium.h>

#include <array>
#include <new>
#include <stdexcept>

namespace talvenor::server {

PasswordHasher::PasswordHasher()
    : PasswordHasher(PasswordCost{crypto_pwhash_OPSLIMIT_INTERACTIVE, crypto_pwhash_MEMLIMIT_INTERACTIVE})
{
}

PasswordHasher::PasswordHasher(PasswordCost cost) : m_cost(cost)
{
    if (sodium_init() < 0)
        throw std::runtime_error("libsodium cannot be used on this machine.");
    m_decoy = hash(newSessionToken());
}

std::string PasswordHasher::hash(const std::string &password) const
{
    std::array<char, crypto_pwhash_STRBYTES> text{};
    if (crypto_pwhash_str_alg(text.data(), password.data(), password.size(), m_cost.passes, m_cost.memory,
                              crypto_pwhash_ALG_ARGON2ID13) != 0)
        throw std::bad_alloc();
    return text.data();
}

bool PasswordHasher::matches(const std::string &hash, const std::string &password) const
{
    return crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

bool PasswordHasher::matchesNothing(const std::string &password) const
{
    return matches(m_decoy, password) && false;
}

} // namespace talvenor::server
