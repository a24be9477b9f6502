#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <exception>
#include <optional>

namespace talvenor {

/// A JSON text is not what its reader needs. The reason is for whoever debugs; users get APIError's sentence.
class DecodingFailure : public std::exception
{
public:
    [[nodiscard]] const char *what() const noexcept override { return "the JSON does not fit the record"; }
};

/// Reads the members of a JSON object with strict types.
///
/// Every reader throws DecodingFailure if the member is missing or has another type; the optional ones take
/// missing and null as absent. Nothing is converted but numbers without a fraction to integers. Members that
/// nobody asks for are ignored.
class JsonObjectReader
{
public:
    /// Throws DecodingFailure unless `json` is an object.
    explicit JsonObjectReader(const QJsonValue &json);

    [[nodiscard]] QString text(QLatin1StringView key) const;
    [[nodiscard]] qint64 integer(QLatin1StringView key) const;
    [[nodiscard]] bool boolean(QLatin1StringView key) const;
    /// The member as it is; missing is a failure.
    [[nodiscard]] QJsonValue value(QLatin1StringView key) const;

    [[nodiscard]] std::optional<QString> optionalText(QLatin1StringView key) const;
    [[nodiscard]] std::optional<qint64> optionalInteger(QLatin1StringView key) const;
    [[nodiscard]] std::optional<bool> optionalBoolean(QLatin1StringView key) const;

private:
    [[nodiscard]] bool isAbsent(QLatin1StringView key) const;

    QJsonObject m_object;
};

/// The number as a 64-bit integer if it is one exactly; absent for fractions, larger numbers and all other
/// types.
[[nodiscard]] std::optional<qint64> exactInteger(const QJsonValue &json);

/// Parses a whole JSON text whose top level is an object or an array; throws DecodingFailure.
[[nodiscard]] QJsonValue parseJson(const QByteArray &text);

} // namespace talvenor
