#include "server/http/Endpoints.h"

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

namespace talvenor::server {

void addVersionEndpoint(Router &router, const Release &release)
{
    boost::json::object object;
    object["version"] = release.version;
    object["build_number"] = release.buildNumber;
    object["download_url"] = nullptr;
    object["release_notes"] = nullptr;
    const HttpResponse response{200, boost::json::serialize(object), {}};
    router.add({"GET", "/api/versions/latest", Work::database, 0,
                [response](const HttpRequest &) { return response; }});
}

} // namespace talvenor::server
