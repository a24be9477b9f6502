#include "server/accounts/SessionToken.h"

#include <sodium.h>

namespace talvenor::server {

std::string newSessionToken()
{
    std::array<unsigned char, 32> random{};
    randombytes_buf(random.data(), random.size());
    constexpr int variant = sodium_base64_VARIANT_URLSAFE_NO_PADDING;
    std::string text(sodium_base64_ENCODED_LEN(random.size(), variant), '\0');
    sodium_bin2base64(text.data(), text.size(), random.data(), random.size(), variant);
    text.resize(text.size() - 1); // the terminating zero
    sodium_memzero(random.data(), random.size());
    return text;
}

TokenHash tokenHash(std::string_view token)
{
    TokenHash hash{};
    crypto_generichash(reinterpret_cast<unsigned char *>(hash.data()), hash.size(),
                       reinterpret_cast<const unsigned char *>(token.data()), token.size(), nullptr, 0);
    return hash;
}

} // namespace talvenor::server
