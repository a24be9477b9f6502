#include "platform/linux/network/CurlTransport.h"

#include "foundation/ProgramEnd.h"
#include "platform/linux/network/CurlExchange.h"

#include <curl/curl.h>

#include <QUrl>

#include <utility>

namespace talvenor {

CurlTransport::CurlTransport(CurlTransportLimits limits) : m_limits(std::move(limits))
{
    // Not thread-safe in every build of libcurl; function statics are.
    [[maybe_unused]] static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    watchForProgramEnd();
}

bool CurlTransport::isValidUrl(const QString &text) const
{
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1StringView("http") || url.scheme() == QLatin1StringView("https"));
}

Task<HttpResponse> CurlTransport::send(HttpRequest request)
{
    // The limits travel with the work, which may outlive this object.
    return onGeneralPool(
        [request = std::move(request), limits = m_limits] { return performCurlExchange(request, limits); });
}

} // namespace talvenor
