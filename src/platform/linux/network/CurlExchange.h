#pragma once

#include "platform/HttpTransport.h"
#include "platform/linux/network/CurlTransport.h"

namespace talvenor {

/// Sends one request and waits for the whole answer on the calling thread; throws PlatformError (domain
/// "network", code of libcurl). Ends early when the program does.
[[nodiscard]] HttpResponse performCurlExchange(const HttpRequest &request, const CurlTransportLimits &limits);

} // namespace talvenor
