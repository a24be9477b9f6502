#pragma once

#include "server/common/Language.h"

#include <string>

namespace talvenor::server {

/// One request as the endpoints see it. Nothing in it is trusted.
struct HttpRequest
{
    std::string method;
    std::string path; ///< without the query, not decoded
    std::string body;
    std::string bearerToken; ///< of the Authorization header; empty without one
    std::string address;     ///< the peer's, without its port
    Language language = Language::english;
};

/// One answer: always a JSON object.
struct HttpResponse
{
    int status = 200;
    std::string body;  ///< serialised JSON
    std::string allow; ///< the Allow header of a 405, else empty
};

} // namespace talvenor::server
