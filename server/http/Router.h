#pragma once

#include "server/http/HttpMessage.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace talvenor::server {

/// Which threads carry out a request: those that wait for the database, the few that hash passwords, or those
/// that compute summaries. None of them serves connections.
enum class Work { database, hashing, summaries };

/// One endpoint.
struct Route
{
    std::string method;
    std::string path; ///< compared byte by byte
    Work work = Work::database;
    std::size_t bodyLimit = 0; ///< bytes
    /// Answers a request on a thread of `work`. May throw Refusal.
    std::function<HttpResponse(const HttpRequest &)> handler;
};

/// All endpoints. Filled before the service starts, then only read, from any thread.
class Router
{
public:
    void add(Route route);

    /// The endpoint of a path and method. Refuses a path that is unknown and a method that the path does not
    /// have.
    [[nodiscard]] const Route &route(std::string_view method, std::string_view path) const;
    /// The methods of a path, as an Allow header lists them; empty for an unknown path.
    [[nodiscard]] std::string methods(std::string_view path) const;

private:
    std::vector<Route> m_routes;
};

} // namespace talvenor::server
