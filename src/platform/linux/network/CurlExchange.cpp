#include "platform/linux/network/CurlExchange.h"

#include "foundation/LocalizedError.h"
#include "foundation/ProgramEnd.h"
#include "platform/linux/network/NetworkErrorText.h"

#include <curl/curl.h>

#include <QUrl>

#include <algorithm>
#include <memory>

namespace talvenor {

namespace {

/// How long the end of the program may go unnoticed.
constexpr int kPollMilliseconds = 100;

/// All header lines of an answer together; no real answer comes near.
constexpr qint64 kMaximumHeaderBytes = qint64(256) * 1024;

[[noreturn]] void fail(CURLcode code)
{
    throw PlatformError(QStringLiteral("network"), code, networkErrorText(code));
}

void check(CURLcode code)
{
    if (code != CURLE_OK)
        fail(code);
}

void check(CURLMcode code)
{
    if (code != CURLM_OK)
        fail(code == CURLM_OUT_OF_MEMORY ? CURLE_OUT_OF_MEMORY : CURLE_FAILED_INIT);
}

template<auto Function>
struct Free
{
    template<typename Handle>
    void operator()(Handle *handle) const
    {
        Function(handle);
    }
};

using EasyHandle = std::unique_ptr<CURL, Free<&curl_easy_cleanup>>;
using MultiHandle = std::unique_ptr<CURLM, Free<&curl_multi_cleanup>>;
using HeaderList = std::unique_ptr<curl_slist, Free<&curl_slist_free_all>>;

/// What has come in so far, and whether it was too much.
struct Answer
{
    QByteArray body;
    qint64 headerBytes = 0;
    qint64 maximumBodyBytes = 0;
    bool isTooLarge = false;
    bool isHeadComplete = false;
};

std::size_t takeBody(char *data, std::size_t, std::size_t size, void *context)
{
    auto *const answer = static_cast<Answer *>(context);
    if (answer->body.size() + qint64(size) > answer->maximumBodyBytes) {
        answer->isTooLarge = true;
        return CURL_WRITEFUNC_ERROR;
    }
    answer->body.append(data, qsizetype(size));
    return size;
}

std::size_t takeHeader(char *data, std::size_t, std::size_t size, void *context)
{
    auto *const answer = static_cast<Answer *>(context);
    const QByteArrayView line(data, qsizetype(size));
    if (line.startsWith("HTTP/"))
        answer->isHeadComplete = false; // the final head may follow provisional ones
    else if (line == "\r\n" || line == "\n")
        answer->isHeadComplete = true;
    answer->headerBytes += qint64(size);
    answer->isTooLarge = answer->headerBytes > kMaximumHeaderBytes;
    return answer->isTooLarge ? 0 : size;
}

/// True if the text may stand in a header line without ending it. A token from the store or from an answer
/// could otherwise smuggle lines, or a whole second request, into this one.
bool isOneLine(const QByteArray &text)
{
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == '\x7f'; });
}

HeaderList headerLines(const HttpRequest &request)
{
    HeaderList lines;
    const auto append = [&lines](const QByteArray &line) {
        curl_slist *const longer = curl_slist_append(lines.get(), line.constData());
        if (!longer)
            fail(CURLE_OUT_OF_MEMORY);
        (void)lines.release(); // the new list has taken it over
        lines.reset(longer);
    };
    bool hasContentType = false;
    for (const auto &[name, value] : request.headers) {
        if (name.isEmpty() || name.contains(':') || !isOneLine(name) || !isOneLine(value))
            fail(CURLE_BAD_FUNCTION_ARGUMENT);
        hasContentType |= name.compare("Content-Type", Qt::CaseInsensitive) == 0;
        // libcurl's notation: a bare colon would remove the header instead of sending it empty.
        append(value.isEmpty() ? name + ';' : name + ": " + value);
    }
    // libcurl would add these by itself: a type for bodies, and for large ones a question first, whose
    // refusal would have the request sent again.
    if (!hasContentType)
        append("Content-Type:");
    append("Expect:");
    return lines;
}

void setAddressAndLimits(CURL *easy, const HttpRequest &request, const CurlTransportLimits &limits)
{
    const QByteArray url = QUrl(request.url, QUrl::StrictMode).toEncoded();
    check(curl_easy_setopt(easy, CURLOPT_URL, url.constData()));
    check(curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https"));
    check(curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L));
    // The environment's proxies are none of the surroundings that this program takes notice of.
    check(curl_easy_setopt(easy, CURLOPT_PROXY, ""));
    check(curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, long(request.timeout.count())));
    check(curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(limits.maximumAnswerBytes)));
    if (!limits.certificateFile.isEmpty()) {
        const QByteArray file = limits.certificateFile.toUtf8();
        check(curl_easy_setopt(easy, CURLOPT_CAINFO, file.constData()));
    }
}

void setConduct(CURL *easy)
{
    // One request, one connection. HTTP/2 has cases in which libcurl repeats a request by itself.
    check(curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, 1L));
    check(curl_easy_setopt(easy, CURLOPT_FORBID_REUSE, 1L));
    check(curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1)));
    check(curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L));
    check(curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L));
    check(curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L));
    check(curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L));
    // A name server that does not answer is left behind instead of being waited for.
    check(curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L));
}

void setMethodAndBody(CURL *easy, const HttpRequest &request)
{
    if (request.body) {
        // Not copied: the request outlives the exchange.
        check(curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(request.body->size())));
        check(curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body->constData()));
    } else if (request.method == "POST" || request.method == "PUT") {
        check(curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(0)));
        check(curl_easy_setopt(easy, CURLOPT_POSTFIELDS, ""));
    }
    check(curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request.method.constData()));
}

/// Drives the transfer to its end and gives libcurl's verdict.
CURLcode run(CURLM *multi, CURL *easy)
{
    check(curl_multi_add_handle(multi, easy));
    // A handle has to leave its group before either is freed.
    const auto leave = [multi](CURL *member) { curl_multi_remove_handle(multi, member); };
    const std::unique_ptr<CURL, decltype(leave)> membership(easy, leave);
    for (int running = 1;;) {
        if (isProgramEnding())
            return CURLE_ABORTED_BY_CALLBACK;
        check(curl_multi_perform(multi, &running));
        if (running == 0)
            break;
        check(curl_multi_poll(multi, nullptr, 0, kPollMilliseconds, nullptr));
    }
    int remaining = 0;
    const CURLMsg *const message = curl_multi_info_read(multi, &remaining);
    return message && message->msg == CURLMSG_DONE ? message->data.result : CURLE_FAILED_INIT;
}

} // namespace

HttpResponse performCurlExchange(const HttpRequest &request, const CurlTransportLimits &limits)
{
    if (request.method.isEmpty() || request.method.contains(' ') || !isOneLine(request.method))
        fail(CURLE_BAD_FUNCTION_ARGUMENT);

    Answer answer;
    answer.maximumBodyBytes = limits.maximumAnswerBytes;
    const HeaderList headers = headerLines(request);
    const MultiHandle multi(curl_multi_init());
    const EasyHandle easy(curl_easy_init()); // freed before its group
    if (!multi || !easy)
        fail(CURLE_OUT_OF_MEMORY);
    setAddressAndLimits(easy.get(), request, limits);
    setConduct(easy.get());
    setMethodAndBody(easy.get(), request);
    check(curl_easy_setopt(easy.get(), CURLOPT_HTTPHEADER, headers.get()));
    check(curl_easy_setopt(easy.get(), CURLOPT_WRITEFUNCTION, takeBody));
    check(curl_easy_setopt(easy.get(), CURLOPT_WRITEDATA, &answer));
    check(curl_easy_setopt(easy.get(), CURLOPT_HEADERFUNCTION, takeHeader));
    check(curl_easy_setopt(easy.get(), CURLOPT_HEADERDATA, &answer));

    const CURLcode outcome = run(multi.get(), easy.get());
    if (answer.isTooLarge)
        fail(CURLE_FILESIZE_EXCEEDED);
    // Only these two mean that bytes came which are no HTTP: the address's own scheme has been tested.
    if (outcome == CURLE_UNSUPPORTED_PROTOCOL || outcome == CURLE_WEIRD_SERVER_REPLY)
        return {};
    check(outcome);
    // libcurl takes a connection that ends within the head for an answer without a body.
    if (!answer.isHeadComplete)
        fail(CURLE_GOT_NOTHING);
    long status = 0;
    check(curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status));
    return {int(status), std::move(answer.body)};
}

} // namespace talvenor
