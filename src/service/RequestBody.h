#pragma once

#include <QByteArray>
#include <QJsonObject>

namespace talvenor {

/// The object as compact JSON in UTF-8; throws PlatformError (domain "json") for numbers that JSON has no
/// form for: infinities and what is no number. Any thread.
[[nodiscard]] QByteArray serializedBody(const QJsonObject &body);

} // namespace talvenor
