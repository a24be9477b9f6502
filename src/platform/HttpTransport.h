#pragma once

#include "foundation/Task.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <chrono>

namespace talvenor {

/// One request, sent as it stands.
struct HttpRequest
{
    QByteArray method; ///< "GET", "POST", "PUT", "DELETE"
    QString url;
    QList<QPair<QByteArray, QByteArray>> headers;
    std::optional<QByteArray> body;
    std::chrono::milliseconds timeout = std::chrono::seconds(30); ///< for the whole exchange
};

/// An answer of any status; redirects are answers like any other.
struct HttpResponse
{
    int statusCode = 0; ///< 0 where the answer was no HTTP at all
    QByteArray body;
};

/// Sends HTTP requests: each once, on a connection of its own, with no cookies, cache or redirects.
class HttpTransport
{
public:
    HttpTransport() = default;
    HttpTransport(const HttpTransport &) = delete;
    HttpTransport &operator=(const HttpTransport &) = delete;
    virtual ~HttpTransport() = default;

    /// True if `url` can be sent to at all: well-formed, absolute, http or https, with a host.
    [[nodiscard]] virtual bool isValidUrl(const QString &url) const = 0;

    /// Sends and waits without blocking the calling thread, which needs an event loop. Throws PlatformError
    /// (domain "network") with a text for the user when no complete answer came.
    virtual Task<HttpResponse> send(HttpRequest request) = 0;
};

} // namespace talvenor
