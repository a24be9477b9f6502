#pragma once

#include "foundation/Task.h"
#include "service/APIError.h"
#include "service/AdminStats.h"
#include "service/AdminUserList.h"
#include "service/AppVersion.h"
#include "service/AuthResponse.h"
#include "service/CaptureResponse.h"
#include "service/SubscriptionOrder.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

namespace talvenor {

/// The one client of the hosted service: base address, bearer token and all operations.
///
/// The operations may be called on any thread that has an event loop and give their result there; sending,
/// decoding and the secret store run on the general pool. Each throws APIError for what the service answers,
/// and the transport's PlatformError, unchanged, when no answer came. Each request is sent once, with 30
/// seconds for the whole exchange.
///
/// The token lies in the secret store and nowhere else, and is read again for each request. An answer of
/// status 401, whatever the request was, deletes it.
class APIService
{
public:
    /// The instance of the process. It comes into being on first use and reads `TALVENOR_API_URL` then; the
    /// platform's transport and secret store must be installed before.
    [[nodiscard]] static APIService &shared();

    APIService(const APIService &) = delete;
    APIService &operator=(const APIService &) = delete;
    ~APIService() = default;

    /// The address that all paths are appended to, as it was given.
    [[nodiscard]] const QString &baseURL() const { return m_baseURL; }

    /// True if a token can be read. Asks the secret store each time, on the calling thread.
    [[nodiscard]] bool isLoggedIn() const;

    /// Deletes the token. Asks nobody but the secret store, on the calling thread.
    void logout();

    /// Creates an account. The token is stored before the answer is handed over.
    Task<AuthResponse> register_(QString email, QString password, QString name);
    /// Signs in. The token is stored before the answer is handed over.
    Task<AuthResponse> login(QString email, QString password);
    Task<UserProfile> fetchProfile();
    /// Counts one recording; `duration` in seconds, finite.
    Task<> logRecording(QString title, double duration);
    Task<UserProfile> updateProfile(QString name);
    Task<> changePassword(QString currentPassword, QString newPassword);

    /// Opens a payment for a plan.
    Task<SubscriptionOrder> createOrder(QString tier);
    /// Takes a payment that has been approved.
    Task<CaptureResponse> captureOrder(QString orderId, QString tier);

    Task<QList<AdminUser>> fetchAdminUsers();
    Task<AdminStats> fetchAdminStats();
    /// Changes what is given and leaves the rest. An answer without the changed user ends the process.
    Task<AdminUser> updateUser(qint64 id, std::optional<QString> tier, std::optional<QString> role,
                               std::optional<qint64> months);
    Task<> deleteUser(qint64 id);

    /// A summary of a transcript; `language` is "de" or "en".
    Task<QString> summarize(QString transcript, QString language);

    /// The newest build that the service offers.
    Task<std::optional<AppVersion>> checkForUpdate();

private:
    APIService();
    friend struct ServiceTestAccess; ///< tests need more than one instance in a process

    // The token in the secret store; these block, so they belong on the general pool.
    [[nodiscard]] static std::optional<QString> token();
    static void setToken(const std::optional<QString> &token);

    template<typename Response>
    Task<Response> request(QByteArray method, QString path, std::optional<QJsonObject> body,
                           bool authenticated);
    template<typename Response>
    Task<Response> get(QString path, bool authenticated = true);
    template<typename Response>
    Task<Response> post(QString path, QJsonObject body, bool authenticated = true);
    template<typename Response>
    Task<Response> put(QString path, QJsonObject body, bool authenticated = true);
    template<typename Response>
    Task<Response> delete_(QString path, bool authenticated = true);
    Task<AuthResponse> authenticate(QString path, QJsonObject body);

    const QString m_baseURL;
};

} // namespace talvenor
