#pragma once

#include <initializer_list>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace talvenor::server {

/// Writes one line for each event to a file descriptor: moment, level, event, then key=value pairs.
///
/// Callers give no passwords, tokens, addresses of people or bodies of requests. Whatever comes from a client
/// is escaped and cut, so that it can neither forge a line nor fill the disk. Callable from any thread.
class Log
{
public:
    using Field = std::pair<std::string_view, std::string>;

    /// Writes to `descriptor`, which stays the caller's; -1 drops everything.
    explicit Log(int descriptor) : m_descriptor(descriptor) {}

    void info(std::string_view event, std::initializer_list<Field> fields = {});
    void warning(std::string_view event, std::initializer_list<Field> fields = {});
    void error(std::string_view event, std::initializer_list<Field> fields = {});

private:
    void write(std::string_view level, std::string_view event, std::initializer_list<Field> fields);

    const int m_descriptor;
    std::mutex m_lock; ///< keeps lines whole
};

} // namespace talvenor::server
