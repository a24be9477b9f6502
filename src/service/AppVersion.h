#pragma once

#include <QJsonValue>
#include <QString>

#include <optional>

namespace talvenor {

/// The newest build that the service knows of.
struct AppVersion
{
    QString version;
    qint64 build_number = 0;
    std::optional<QString> download_url;
    std::optional<QString> release_notes;

    /// Throws DecodingFailure unless all that is required is there with the right type. Any thread.
    [[nodiscard]] static AppVersion fromJson(const QJsonValue &json);

    friend bool operator==(const AppVersion &, const AppVersion &) = default;
};

} // namespace talvenor
