#include "server/common/Log.h"

#include "server/common/Time.h"

#include <unistd.h>

namespace talvenor::server {

namespace {

constexpr std::size_t longestValue = 200;

/// A value with everything but printable ASCII written as %XX, quoted where it holds a blank, cut at
/// `longestValue` bytes.
std::string escaped(std::string_view value)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    const bool quoted = value.empty() || value.find(' ') != std::string_view::npos;
    std::string text;
    if (quoted)
        text += '"';
    for (const char character : value.substr(0, longestValue)) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte > 0x7e || byte == '%' || byte == '"') {
            text += '%';
            text += digits[byte >> 4U];
            text += digits[byte & 15U];
        } else {
            text += character;
        }
    }
    if (value.size() > longestValue)
        text += "...";
    if (quoted)
        text += '"';
    return text;
}

} // namespace

void Log::info(std::string_view event, std::initializer_list<Field> fields)
{
    write("info", event, fields);
}

void Log::warning(std::string_view event, std::initializer_list<Field> fields)
{
    write("warning", event, fields);
}

void Log::error(std::string_view event, std::initializer_list<Field> fields)
{
    write("error", event, fields);
}

void Log::write(std::string_view level, std::string_view event, std::initializer_list<Field> fields)
{
    if (m_descriptor < 0)
        return;
    std::string line = isoText(systemTime());
    line.append(" ").append(level).append(" ").append(event);
    for (const auto &[key, value] : fields)
        line.append(" ").append(key).append("=").append(escaped(value));
    line += '\n';
    const std::lock_guard guard(m_lock);
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t written = ::write(m_descriptor, rest.data(), rest.size());
        if (written <= 0)
            return; // A log that nobody can take any more must not stop the service.
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace talvenor::server
