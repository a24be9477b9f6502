#pragma once

#include <QJsonValue>
#include <QString>

#include <variant>

namespace talvenor {

/// One JSON scalar of a type that does not matter, where only the object around it does.
struct AnyDecodable
{
    /// Tried in this order. Null, arrays and objects are held as the empty text.
    std::variant<qint64, double, QString, bool> value;

    /// Never fails. Any thread.
    [[nodiscard]] static AnyDecodable fromJson(const QJsonValue &json);
};

} // namespace talvenor
