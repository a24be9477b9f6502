#pragma once

#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace talvenor::bench {

/// The address of a port on loopback.
inline sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A kept connection that sends one request at a time and waits for its answer; as little as a client can do,
/// so that what is measured is the other side.
class LoopbackClient
{
public:
    explicit LoopbackClient(std::uint16_t port)
        : m_descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const sockaddr_in address = loopback(port);
        if (::connect(m_descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
            throw std::runtime_error("cannot connect");
        const int on = 1;
        ::setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }
    ~LoopbackClient() { ::close(m_descriptor); }
    LoopbackClient(const LoopbackClient &) = delete;
    LoopbackClient &operator=(const LoopbackClient &) = delete;

    /// Sends a request and reads until the answer ends with `end`. False if the other side fails.
    bool exchange(const std::string &request, std::string_view end)
    {
        if (::send(m_descriptor, request.data(), request.size(), MSG_NOSIGNAL) < 0)
            return false;
        m_answer.clear();
        while (!m_answer.ends_with(end)) {
            const ssize_t size = ::recv(m_descriptor, m_buffer.data(), m_buffer.size(), 0);
            if (size <= 0)
                return false;
            m_answer.append(m_buffer.data(), static_cast<std::size_t>(size));
        }
        return true;
    }
    /// The last answer, header and body.
    [[nodiscard]] const std::string &answer() const { return m_answer; }

private:
    int m_descriptor;
    std::array<char, 16 * 1024> m_buffer{};
    std::string m_answer;
};

} // namespace talvenor::bench
