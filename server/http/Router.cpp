#include "server/http/Router.h"

#include "server/common/Refusal.h"

namespace talvenor::server {

void Router::add(Route route)
{
    m_routes.push_back(std::move(route));
}

const Route &Router::route(std::string_view method, std::string_view path) const
{
    bool known = false;
    for (const Route &route : m_routes) {
        if (route.path != path)
            continue;
        if (route.method == method)
            return route;
        known = true;
    }
    throw Refusal(known ? Reason::methodNotAllowed : Reason::notFound);
}

std::string Router::methods(std::string_view path) const
{
    std::string methods;
    for (const Route &route : m_routes) {
        if (route.path == path)
            methods += (methods.empty() ? "" : ", ") + route.method;
    }
    return methods;
}

} // namespace talvenor::server
