#pragma once

#include "platform/HttpTransport.h"

namespace talvenor {

/// What a CurlTransport is bound by.
struct CurlTransportLimits
{
    /// Larger answers are an error. The largest that the service has reason to send, the list of all users of
    /// a big installation, stays far below; and what is parsed from it takes many times its size.
    qint64 maximumAnswerBytes = qint64(16) * 1024 * 1024;
    /// A file of certificates to trust in place of the system's; empty for the system's.
    QString certificateFile;
};

/// HTTP by libcurl, on the general pool.
///
/// Each request has a connection of its own and is written to it once: nothing is repeated, whatever becomes
/// of the connection. Redirects, cookies, caches, proxies and stored passwords play no part. Certificates are
/// verified. May be used on any thread with an event loop.
class CurlTransport : public HttpTransport
{
public:
    explicit CurlTransport(CurlTransportLimits limits = {});

    [[nodiscard]] bool isValidUrl(const QString &url) const override;

    /// As told by the seam. A body goes with any method; without one, POST and PUT send an empty body.
    Task<HttpResponse> send(HttpRequest request) override;

private:
    CurlTransportLimits m_limits;
};

} // namespace talvenor
