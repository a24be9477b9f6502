#include "service/AppVersion.h"

#include "service/JsonDecoding.h"

namespace talvenor {

AppVersion AppVersion::fromJson(const QJsonValue &json)
{
    const JsonObjectReader reader(json);
    return {
        .version = reader.text(QLatin1StringView("version")),
        .build_number = reader.integer(QLatin1StringView("build_number")),
        .download_url = reader.optionalText(QLatin1StringView("download_url")),
        .release_notes = reader.optionalText(QLatin1StringView("release_notes")),
    };
}

} // namespace talvenor
