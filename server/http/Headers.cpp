#include "server/http/Headers.h"

#include <algorithm>
#include <cctype>

namespace talvenor::server {

namespace {

std::string_view trimmed(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), text.begin(), [](char expected, char actual) {
               return expected == std::tolower(static_cast<unsigned char>(actual));
           });
}

/// The weight of "q=0.8" in thousandths; 1000 without one, 0 for what is no weight.
int weight(std::string_view parameters)
{
    const std::string_view text = trimmed(parameters);
    if (text.empty())
        return 1000;
    if (!startsWithIgnoringCase(text, "q=") || text.size() < 3 || text[2] < '0' || text[2] > '1')
        return 0;
    int value = (text[2] - '0') * 1000;
    int scale = 100;
    for (std::size_t index = 4; index < text.size() && scale > 0; ++index, scale /= 10) {
        if (text[index] < '0' || text[index] > '9')
            break;
        value += (text[index] - '0') * scale;
    }
    return std::min(value, 1000);
}

bool isLanguage(std::string_view tag, std::string_view language)
{
    return startsWithIgnoringCase(tag, language) &&
           (tag.size() == language.size() || tag[language.size()] == '-');
}

} // namespace

Language preferredLanguage(std::string_view acceptLanguage)
{
    int german = 0;
    int english = 0;
    while (!acceptLanguage.empty()) {
        const std::size_t comma = std::min(acceptLanguage.find(','), acceptLanguage.size());
        const std::string_view entry = acceptLanguage.substr(0, comma);
        acceptLanguage.remove_prefix(std::min(comma + 1, acceptLanguage.size()));
        const std::size_t semicolon = std::min(entry.find(';'), entry.size());
        const std::string_view tag = trimmed(entry.substr(0, semicolon));
        const int wanted = weight(entry.substr(std::min(semicolon + 1, entry.size())));
        if (isLanguage(tag, "de"))
            german = std::max(german, wanted);
        else if (isLanguage(tag, "en") || tag == "*")
            english = std::max(english, wanted);
    }
    return german > english ? Language::german : Language::english;
}

std::string bearerToken(std::string_view authorization)
{
    const std::string_view text = trimmed(authorization);
    constexpr std::string_view scheme = "bearer ";
    if (!startsWithIgnoringCase(text, scheme))
        return {};
    return std::string(trimmed(text.substr(scheme.size())));
}

std::string pathOf(std::string_view target)
{
    if (startsWithIgnoringCase(target, "http://") || startsWithIgnoringCase(target, "https://")) {
        const std::size_t slash = target.find('/', target.find("//") + 2);
        if (slash == std::string_view::npos)
            return "/";
        target.remove_prefix(slash);
    }
    if (target.empty() || target.front() != '/')
        return {};
    return std::string(target.substr(0, target.find('?')));
}

} // namespace talvenor::server
