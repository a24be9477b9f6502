#include "service/JsonDecoding.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <limits>

namespace talvenor {

JsonObjectReader::JsonObjectReader(const QJsonValue &json)
{
    if (!json.isObject())
        throw DecodingFailure();
    m_object = json.toObject();
}

QString JsonObjectReader::text(QLatin1StringView key) const
{
    const QJsonValue member = value(key);
    if (!member.isString())
        throw DecodingFailure();
    return member.toString();
}

qint64 JsonObjectReader::integer(QLatin1StringView key) const
{
    const auto number = exactInteger(value(key));
    if (!number)
        throw DecodingFailure();
    return *number;
}

bool JsonObjectReader::boolean(QLatin1StringView key) const
{
    const QJsonValue member = value(key);
    if (!member.isBool())
        throw DecodingFailure();
    return member.toBool();
}

QJsonValue JsonObjectReader::value(QLatin1StringView key) const
{
    const auto member = m_object.constFind(key);
    if (member == m_object.constEnd())
        throw DecodingFailure();
    return *member;
}

std::optional<QString> JsonObjectReader::optionalText(QLatin1StringView key) const
{
    return isAbsent(key) ? std::nullopt : std::optional(text(key));
}

std::optional<qint64> JsonObjectReader::optionalInteger(QLatin1StringView key) const
{
    return isAbsent(key) ? std::nullopt : std::optional(integer(key));
}

std::optional<bool> JsonObjectReader::optionalBoolean(QLatin1StringView key) const
{
    return isAbsent(key) ? std::nullopt : std::optional(boolean(key));
}

bool JsonObjectReader::isAbsent(QLatin1StringView key) const
{
    const QJsonValue member = m_object.value(key); // undefined where there is none
    return member.isUndefined() || member.isNull();
}

std::optional<qint64> exactInteger(const QJsonValue &json)
{
    if (!json.isDouble())
        return std::nullopt;
    // Qt keeps integers apart from doubles inside, but only this conversion shows them: it gives the
    // fallback for what is no exact integer, so two different fallbacks tell that from a real value.
    constexpr qint64 one = std::numeric_limits<qint64>::min();
    constexpr qint64 other = std::numeric_limits<qint64>::max();
    const qint64 number = json.toInteger(one);
    if (number == one && json.toInteger(other) == other)
        return std::nullopt;
    return number;
}

QJsonValue parseJson(const QByteArray &text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError)
        throw DecodingFailure();
    if (document.isObject())
        return document.object();
    return document.array();
}

} // namespace talvenor
