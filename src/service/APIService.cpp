#include "service/APIService.h"

#include "foundation/ProgrammingError.h"
#include "platform/Platform.h"
#include "service/AnyDecodable.h"
#include "service/BuildNumber.h"
#include "service/JsonDecoding.h"
#include "service/RequestBody.h"
#include "service/ServiceAddress.h"
#include "service/SummarizeResponse.h"

#include <QHash>
#include <QStringDecoder>

namespace talvenor {

namespace {

const auto kSecretService = QStringLiteral("app.talvenor.auth");
const auto kSecretAccount = QStringLiteral("authToken");

constexpr std::chrono::seconds kTimeout(30);

/// The text that the service gives with a refusal, in its words.
QString extractError(const QByteArray &data)
{
    try {
        return JsonObjectReader(parseJson(data)).text(QLatin1StringView("error"));
    } catch (const DecodingFailure &) {
        return QStringLiteral("Unknown error");
    }
}

/// Answers that are objects of values of one kind under keys of any name.
template<typename Value>
struct Mapping
{
    QHash<QString, Value> entries;

    static Mapping fromJson(const QJsonValue &json)
    {
        if (!json.isObject())
            throw DecodingFailure();
        const QJsonObject object = json.toObject();
        Mapping result;
        for (auto member = object.begin(); member != object.end(); ++member)
            result.entries.insert(member.key(), Value::fromJson(member.value()));
        return result;
    }
};

/// The record in the body of a success, or the error that the status stands for.
template<typename Response>
Response decoded(const HttpResponse &response)
{
    switch (response.statusCode) {
    case 200:
    case 201:
        try {
            return Response::fromJson(parseJson(response.body));
        } catch (const DecodingFailure &) {
            throw APIError::decodingError();
        }
    case 403:
        throw APIError::forbidden(extractError(response.body));
    case 400:
    case 409:
        throw APIError::badRequest(extractError(response.body));
    default:
        throw APIError::serverError(extractError(response.body));
    }
}

} // namespace

APIService &APIService::shared()
{
    static APIService instance;
    return instance;
}

APIService::APIService() : m_baseURL(serviceBaseURL())
{
}

bool APIService::isLoggedIn() const
{
    return token().has_value();
}

void APIService::logout()
{
    setToken(std::nullopt);
}

std::optional<QString> APIService::token()
{
    const auto bytes = Platform::shared().secretStore->load(kSecretService, kSecretAccount);
    if (!bytes || bytes->isEmpty())
        return std::nullopt;
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(*bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

void APIService::setToken(const std::optional<QString> &token)
{
    SecretStore &store = *Platform::shared().secretStore;
    const QByteArray bytes = token ? token->toUtf8() : QByteArray();
    if (bytes.isEmpty())
        store.remove(kSecretService, kSecretAccount);
    else
        store.save(kSecretService, kSecretAccount, bytes);
}

template<typename Response>
Task<Response> APIService::request(QByteArray method, QString path, std::optional<QJsonObject> body,
                                   bool authenticated)
{
    const std::shared_ptr<HttpTransport> transport = Platform::shared().httpTransport;
    const QString url = m_baseURL + path;
    if (!transport->isValidUrl(url))
        throw APIError::network(QStringLiteral("Invalid URL"));

    HttpRequest request;
    request.method = method;
    request.url = url;
    request.timeout = kTimeout;
    request.headers.append({QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/json")});
    // A transcript of hours is not serialised on the caller's thread, nor is the secret store asked there.
    auto prepare = [request, body, authenticated]() mutable {
        if (authenticated) {
            if (const auto bearer = token())
                request.headers.append(
                    {QByteArrayLiteral("Authorization"), QByteArrayLiteral("Bearer ") + bearer->toUtf8()});
        }
        if (body)
            request.body = serializedBody(*body);
        return request;
    };
    request = co_await onGeneralPool(std::move(prepare));

    const HttpResponse response = co_await transport->send(std::move(request));
    if (response.statusCode == 0)
        throw APIError::network(QStringLiteral("No response"));
    auto read = [response] {
        if (response.statusCode == 401) {
            setToken(std::nullopt);
            throw APIError::unauthorized();
        }
        return decoded<Response>(response);
    };
    co_return co_await onGeneralPool(std::move(read));
}

template<typename Response>
Task<Response> APIService::get(QString path, bool authenticated)
{
    return request<Response>(QByteArrayLiteral("GET"), std::move(path), std::nullopt, authenticated);
}

template<typename Response>
Task<Response> APIService::post(QString path, QJsonObject body, bool authenticated)
{
    return request<Response>(QByteArrayLiteral("POST"), std::move(path), std::move(body), authenticated);
}

template<typename Response>
Task<Response> APIService::put(QString path, QJsonObject body, bool authenticated)
{
    return request<Response>(QByteArrayLiteral("PUT"), std::move(path), std::move(body), authenticated);
}

template<typename Response>
Task<Response> APIService::delete_(QString path, bool authenticated)
{
    return request<Response>(QByteArrayLiteral("DELETE"), std::move(path), std::nullopt, authenticated);
}

Task<AuthResponse> APIService::authenticate(QString path, QJsonObject body)
{
    const auto response = co_await post<AuthResponse>(std::move(path), std::move(body), false);
    auto save = [token = response.token] { setToken(token); };
    co_await onGeneralPool(std::move(save));
    co_return response;
}

Task<AuthResponse> APIService::register_(QString email, QString password, QString name)
{
    return authenticate(QStringLiteral("/auth/register"), {{QStringLiteral("email"), email},
                                                           {QStringLiteral("password"), password},
                                                           {QStringLiteral("name"), name}});
}

Task<AuthResponse> APIService::login(QString email, QString password)
{
    return authenticate(QStringLiteral("/auth/login"),
                        {{QStringLiteral("email"), email}, {QStringLiteral("password"), password}});
}

Task<UserProfile> APIService::fetchProfile()
{
    return get<UserProfile>(QStringLiteral("/auth/me"));
}

// GCC 12 cannot keep an initialiser list across a wait, so bodies stand before it.

Task<> APIService::logRecording(QString title, double duration)
{
    const QJsonObject body{{QStringLiteral("title"), title}, {QStringLiteral("duration"), duration}};
    co_await post<Mapping<AnyDecodable>>(QStringLiteral("/auth/record"), body);
}

Task<UserProfile> APIService::updateProfile(QString name)
{
    return put<UserProfile>(QStringLiteral("/auth/profile"), {{QStringLiteral("name"), name}});
}

Task<> APIService::changePassword(QString currentPassword, QString newPassword)
{
    const QJsonObject body{{QStringLiteral("current_password"), currentPassword},
                           {QStringLiteral("new_password"), newPassword}};
    co_await put<Mapping<AnyDecodable>>(QStringLiteral("/auth/password"), body);
}

Task<SubscriptionOrder> APIService::createOrder(QString tier)
{
    return post<SubscriptionOrder>(QStringLiteral("/subscriptions/create-order"),
                                   {{QStringLiteral("tier"), tier}});
}

Task<CaptureResponse> APIService::captureOrder(QString orderId, QString tier)
{
    return post<CaptureResponse>(QStringLiteral("/subscriptions/capture-order"),
                                 {{QStringLiteral("order_id"), orderId}, {QStringLiteral("tier"), tier}});
}

Task<QList<AdminUser>> APIService::fetchAdminUsers()
{
    co_return (co_await get<AdminUserList>(QStringLiteral("/admin/users"))).users;
}

Task<AdminStats> APIService::fetchAdminStats()
{
    return get<AdminStats>(QStringLiteral("/admin/stats"));
}

Task<AdminUser> APIService::updateUser(qint64 id, std::optional<QString> tier, std::optional<QString> role,
                                       std::optional<qint64> months)
{
    QJsonObject body;
    if (tier)
        body.insert(QStringLiteral("subscription_tier"), *tier);
    if (role)
        body.insert(QStringLiteral("role"), *role);
    if (months)
        body.insert(QStringLiteral("subscription_months"), *months);
    const auto answer =
        co_await put<Mapping<AdminUser>>(QStringLiteral("/admin/users/") + QString::number(id), body);
    const auto user = answer.entries.constFind(QStringLiteral("user"));
    if (user == answer.entries.constEnd())
        programmingError(QStringLiteral("the service has changed a user and does not say which"));
    co_return *user;
}

Task<> APIService::deleteUser(qint64 id)
{
    co_await delete_<Mapping<AnyDecodable>>(QStringLiteral("/admin/users/") + QString::number(id));
}

Task<QString> APIService::summarize(QString transcript, QString language)
{
    const QJsonObject body{{QStringLiteral("transcript"), transcript},
                           {QStringLiteral("language"), language}};
    const auto response = co_await post<SummarizeResponse>(QStringLiteral("/summarize"), body);
    co_return response.summary;
}

Task<std::optional<AppVersion>> APIService::checkForUpdate()
{
    const auto newest = co_await get<AppVersion>(QStringLiteral("/versions/latest"), false);
    // Only the build numbers count; the version is a label.
    if (ownBuildNumber() >= newest.build_number)
        co_return std::nullopt;
    co_return newest;
}

} // namespace talvenor
