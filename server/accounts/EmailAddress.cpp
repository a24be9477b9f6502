#include "server/accounts/EmailAddress.h"

#include <algorithm>

namespace talvenor::server {

namespace {

constexpr std::size_t longestAddress = 254;
constexpr std::string_view blanks = " \t\r\n";

} // namespace

std::optional<std::string> normalisedEmail(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos)
        return std::nullopt;
    text = text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
    const std::size_t at = text.find('@');
    if (text.size() > longestAddress || at == 0 || at == std::string_view::npos || at + 1 == text.size() ||
        text.find('@', at + 1) != std::string_view::npos)
        return std::nullopt;
    std::string address(text);
    for (char &character : address) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte <= 0x20 || byte == 0x7f || character == ',' || character == ';' || character == '<' ||
            character == '>')
            return std::nullopt;
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return address;
}

} // namespace talvenor::server
