#pragma once

#include "LoopbackClient.h"

#include <atomic>
#include <thread>
#include <vector>

namespace talvenor::bench {

/// The peer: a thread for each connection, which answers whatever comes with the same bytes. No parsing, no
/// database, no hand-over between threads: about the most that sockets give on this machine.
class StaticServer
{
public:
    explicit StaticServer(std::string answer)
        : m_answer(std::move(answer)), m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = loopback(0);
        socklen_t size = sizeof address;
        if (::bind(m_listener, reinterpret_cast<sockaddr *>(&address), size) != 0 ||
            ::listen(m_listener, 64) != 0 ||
            ::getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &size) != 0)
            throw std::runtime_error("cannot listen");
        m_port = ntohs(address.sin_port);
        m_acceptor = std::thread([this] { accept(); });
    }
    ~StaticServer()
    {
        ::shutdown(m_listener, SHUT_RDWR);
        m_acceptor.join();
        for (std::thread &thread : m_threads)
            thread.join(); // Its client has gone.
        ::close(m_listener);
    }
    StaticServer(const StaticServer &) = delete;
    StaticServer &operator=(const StaticServer &) = delete;

    [[nodiscard]] std::uint16_t port() const { return m_port; }

private:
    void accept()
    {
        for (;;) {
            const int descriptor = ::accept(m_listener, nullptr, nullptr);
            if (descriptor < 0)
                return;
            const int on = 1;
            ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            m_threads.emplace_back([this, descriptor] {
                std::array<char, 16 * 1024> buffer{};
                while (::recv(descriptor, buffer.data(), buffer.size(), 0) > 0 &&
                       ::send(descriptor, m_answer.data(), m_answer.size(), MSG_NOSIGNAL) > 0) {
                }
                ::close(descriptor);
            });
        }
    }

    const std::string m_answer;
    int m_listener;
    std::uint16_t m_port = 0;
    std::thread m_acceptor;
    std::vector<std::thread> m_threads; ///< of m_acceptor while it runs
};

} // namespace talvenor::bench
