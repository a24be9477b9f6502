#include "server/http/Endpoints.h"

#include "server/common/Refusal.h"
#include "server/http/JsonFields.h"

#include <boost/json/serialize.hpp>

namespace talvenor::server {

namespace {

/// An hour of speech is some 60 KB of transcript; this holds a working week of it.
constexpr std::size_t transcriptBody = 4 * 1024 * 1024;

Language languageOf(const boost::json::object &body)
{
    const std::string language = requiredText(body, "language");
    if (language == "de")
        return Language::german;
    if (language == "en")
        return Language::english;
    throw Refusal(Reason::invalidField, "language");
}

} // namespace

void addSummaryEndpoint(Router &router, Accounts &accounts, Summarizer &summarizer)
{
    const auto handler = [&accounts, &summarizer](const HttpRequest &request) {
        accounts.requireSummaries(accounts.authenticated(request.bearerToken));
        const auto body = parsedObject(request.body);
        const std::string transcript = requiredText(body, "transcript");
        boost::json::object object;
        object["summary"] = summarizer.summarize(transcript, languageOf(body));
        HttpResponse response;
        response.body = boost::json::serialize(object);
        return response;
    };
    router.add({"POST", "/api/summarize", Work::summaries, transcriptBody, handler});
}

} // namespace talvenor::server
