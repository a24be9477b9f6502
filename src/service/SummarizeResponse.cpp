#include "service/SummarizeResponse.h"

#include "service/JsonDecoding.h"

namespace talvenor {

SummarizeResponse SummarizeResponse::fromJson(const QJsonValue &json)
{
    const JsonObjectReader reader(json);
    return {
        .summary = reader.text(QLatin1StringView("summary")),
    };
}

} // namespace talvenor
