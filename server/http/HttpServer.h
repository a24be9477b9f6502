#pragma once

#include "server/common/Log.h"
#include "server/http/Router.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace talvenor::server {

/// Bounds that keep a client from holding more than its share, and the sizes of the thread pools.
struct HttpLimits
{
    std::size_t connections = 1024; ///< at once; further ones wait in the kernel's queue
    std::size_t headerBytes = 16 * 1024;
    std::chrono::milliseconds header = std::chrono::seconds(15); ///< for a whole header
    std::chrono::milliseconds body = std::chrono::seconds(60);   ///< for a whole body
    std::chrono::milliseconds idle = std::chrono::seconds(75);   ///< between two requests
    std::chrono::milliseconds write = std::chrono::seconds(30);  ///< for the client to take an answer
    std::chrono::milliseconds stop = std::chrono::seconds(10);   ///< for running requests at a stop
    std::size_t connectionThreads = 2;
    std::size_t databaseThreads = 4;
    std::size_t hashingThreads = 2; ///< each takes the memory of one hash
    std::size_t summaryThreads = 1;
};

/// HTTP/1.1 for one Router: reads requests within bounds, hands them to the threads of their kind of work and
/// writes the answers. Connections are coroutines on few threads. Its functions are for one thread at a time.
class HttpServer
{
public:
    /// `router` and `log` must outlive this.
    HttpServer(const Router &router, Log &log, HttpLimits limits);
    /// Stops as stop() does.
    ~HttpServer();
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

    /// Begins to serve at an IP address and port; port 0 takes a free one. Gives the port. Throws
    /// boost::system::system_error where the place cannot be had.
    std::uint16_t start(const std::string &address, std::uint16_t port);

    /// Takes no more connections, closes idle ones, lets running requests end within the limit, and waits for
    /// all of it.
    void stop();

private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

} // namespace talvenor::server
