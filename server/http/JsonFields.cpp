#include "server/http/JsonFields.h"

#include "server/common/Refusal.h"

#include <boost/json/parse.hpp>

#include <cmath>

namespace talvenor::server {

boost::json::object parsedObject(std::string_view body)
{
    boost::json::parse_options options;
    options.max_depth = 16; // No request nests at all.
    boost::system::error_code error;
    boost::json::value value = boost::json::parse(boost::json::string_view(body.data(), body.size()), error,
                                                  boost::json::storage_ptr(), options);
    if (error)
        throw Refusal(Reason::malformedJson);
    if (!value.is_object())
        throw Refusal(Reason::notAnObject);
    return std::move(value.get_object());
}

std::string requiredText(const boost::json::object &object, std::string_view key)
{
    const boost::json::value *const value =
        object.if_contains(boost::json::string_view(key.data(), key.size()));
    if (value == nullptr || !value->is_string())
        throw Refusal(Reason::invalidField, std::string(key));
    const boost::json::string &text = value->get_string();
    return {text.data(), text.size()};
}

double requiredAmount(const boost::json::object &object, std::string_view key)
{
    const boost::json::value *const value =
        object.if_contains(boost::json::string_view(key.data(), key.size()));
    if (value == nullptr || !value->is_number())
        throw Refusal(Reason::invalidField, std::string(key));
    const auto amount = value->to_number<double>();
    if (!std::isfinite(amount) || amount < 0)
        throw Refusal(Reason::invalidField, std::string(key));
    return amount;
}

} // namespace talvenor::server
