#include "service/AnyDecodable.h"

#include "service/JsonDecoding.h"

namespace talvenor {

AnyDecodable AnyDecodable::fromJson(const QJsonValue &json)
{
    if (const auto integer = exactInteger(json))
        return {*integer};
    if (json.isDouble())
        return {json.toDouble()};
    if (json.isBool())
        return {json.toBool()};
    return {json.toString()}; // empty for everything that is no text
}

} // namespace talvenor
