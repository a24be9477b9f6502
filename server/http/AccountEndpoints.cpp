#include "server/http/Endpoints.h"

#include "server/http/JsonFields.h"

#include <boost/json/serialize.hpp>

namespace talvenor::server {

namespace {

/// Enough for any name, title and password, and little enough to be held for many connections.
constexpr std::size_t smallBody = 64 * 1024;

boost::json::value optionalNumber(const std::optional<std::int64_t> &number)
{
    return number ? boost::json::value(*number) : boost::json::value(nullptr);
}

boost::json::string text(std::string_view value)
{
    return boost::json::string(value.data(), value.size());
}

boost::json::object profileObject(const Profile &profile)
{
    boost::json::object object;
    object["id"] = profile.id;
    object["email"] = text(profile.email);
    object["name"] = text(profile.name);
    object["role"] = text(name(profile.role));
    object["subscription_tier"] = text(name(profile.tier));
    object["subscription_expires_at"] =
        profile.expiry ? boost::json::value(text(isoText(*profile.expiry))) : boost::json::value(nullptr);
    object["recordings_count"] = profile.recordingsCount;
    object["recordings_limit"] = optionalNumber(profile.recordingsLimit);
    object["can_record"] = profile.canRecord;
    return object;
}

HttpResponse answer(int status, const boost::json::object &object)
{
    HttpResponse response;
    response.status = status;
    response.body = boost::json::serialize(object);
    return response;
}

HttpResponse sessionAnswer(int status, const Session &session)
{
    boost::json::object object;
    object["token"] = text(session.token);
    object["user"] = profileObject(session.user);
    return answer(status, object);
}

HttpResponse registerAccount(Accounts &accounts, const HttpRequest &request)
{
    const auto body = parsedObject(request.body);
    return sessionAnswer(201,
                         accounts.registerAccount(requiredText(body, "email"), requiredText(body, "password"),
                                                  requiredText(body, "name")));
}

HttpResponse login(Accounts &accounts, const HttpRequest &request)
{
    const auto body = parsedObject(request.body);
    return sessionAnswer(
        200, accounts.login(requiredText(body, "email"), requiredText(body, "password"), request.address));
}

HttpResponse readProfile(Accounts &accounts, const HttpRequest &request)
{
    return answer(200, profileObject(accounts.profile(accounts.authenticated(request.bearerToken))));
}

HttpResponse updateProfile(Accounts &accounts, const HttpRequest &request)
{
    const Account account = accounts.authenticated(request.bearerToken);
    const auto body = parsedObject(request.body);
    return answer(200, profileObject(accounts.rename(account, requiredText(body, "name"))));
}

HttpResponse changePassword(Accounts &accounts, const HttpRequest &request)
{
    const Account account = accounts.authenticated(request.bearerToken);
    const auto body = parsedObject(request.body);
    accounts.changePassword(account, request.bearerToken, requiredText(body, "current_password"),
                            requiredText(body, "new_password"), request.address);
    boost::json::object object;
    object["success"] = true;
    return answer(200, object);
}

HttpResponse logRecording(Accounts &accounts, const HttpRequest &request)
{
    const Account account = accounts.authenticated(request.bearerToken);
    const auto body = parsedObject(request.body);
    const Profile profile =
        accounts.logRecording(account, requiredText(body, "title"), requiredAmount(body, "duration"));
    boost::json::object object;
    object["success"] = true;
    object["recordings_count"] = profile.recordingsCount;
    object["recordings_limit"] = optionalNumber(profile.recordingsLimit);
    object["can_record"] = profile.canRecord;
    return answer(201, object);
}

} // namespace

void addAccountEndpoints(Router &router, Accounts &accounts)
{
    using Operation = HttpResponse (*)(Accounts &, const HttpRequest &);
    const auto add = [&](const char *method, const char *path, Work work, Operation operation) {
        router.add({method, path, work, smallBody, [&accounts, operation](const HttpRequest &request) {
                        return operation(accounts, request);
                    }});
    };
    add("POST", "/api/auth/register", Work::hashing, registerAccount);
    add("POST", "/api/auth/login", Work::hashing, login);
    add("GET", "/api/auth/me", Work::database, readProfile);
    add("POST", "/api/auth/record", Work::database, logRecording);
    add("PUT", "/api/auth/profile", Work::database, updateProfile);
    add("PUT", "/api/auth/password", Work::hashing, changePassword);
}

} // namespace talvenor::server
