#include "platform/linux/network/SecretServiceClient.h"

#include "foundation/LocalizedError.h"

#include <QtGlobal>

#include <utility>
#include <vector>

namespace talvenor {

namespace {

/// Finds items by the two attributes alone, also those that another program has made.
const SecretSchema kSchema = {
    "com.talvenor.Credential",
    SECRET_SCHEMA_DONT_MATCH_NAME,
    {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING}, {"account", SECRET_SCHEMA_ATTRIBUTE_STRING}},
    0,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

struct SecretValueRelease
{
    void operator()(SecretValue *value) const { secret_value_unref(value); }
};
using SecretValuePointer = std::unique_ptr<SecretValue, SecretValueRelease>;

using Items = std::vector<GObjectPointer<SecretItem>>;

/// Receives the error of a GLib call and throws it.
class ErrorSlot
{
public:
    ErrorSlot() = default;
    Q_DISABLE_COPY_MOVE(ErrorSlot)
    ~ErrorSlot() { g_clear_error(&m_error); }

    // Implicit, to stand in the argument lists of GLib's functions.
    operator GError **() { return &m_error; }
    [[nodiscard]] const GError *get() const { return m_error; }

    void throwIfSet(const char *domain = "secret store") const
    {
        if (m_error)
            throw PlatformError(QString::fromLatin1(domain), m_error->code,
                                QString::fromUtf8(m_error->message));
    }

private:
    GError *m_error = nullptr;
};

GHashTablePointer attributes(const SecretName &name)
{
    GHashTable *const table = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free);
    const auto insert = [table](const char *key, const QString &value) {
        g_hash_table_insert(table, g_strdup(key), g_strdup(value.toUtf8().constData()));
    };
    insert("service", name.service);
    insert("account", name.account);
    return GHashTablePointer(table);
}

Items search(SecretService *service, const SecretName &name, int flags)
{
    ErrorSlot error;
    GList *const found =
        secret_service_search_sync(service, &kSchema, attributes(name).get(),
                                   SecretSearchFlags(SECRET_SEARCH_ALL | flags), nullptr, error);
    Items items;
    for (GList *entry = found; entry; entry = entry->next)
        items.emplace_back(static_cast<SecretItem *>(entry->data));
    g_list_free(found);
    error.throwIfSet();
    return items;
}

GObjectPointer<SecretCollection> defaultCollection(SecretService *service)
{
    ErrorSlot error;
    GObjectPointer<SecretCollection> collection(secret_collection_for_alias_sync(
        service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, error));
    error.throwIfSet();
    return collection;
}

} // namespace

SecretServiceClient::SecretServiceClient()
{
    // GLib would end the program when the session bus goes away, in the middle of a recording.
    ErrorSlot busError;
    const GObjectPointer<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, busError));
    busError.throwIfSet("secret store absent");
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);

    ErrorSlot error;
    m_service.reset(
        secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, nullptr, error));
    if (!m_service) {
        const GError *const reason = error.get();
        const bool isAbsent = g_error_matches(reason, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
                              g_error_matches(reason, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER);
        error.throwIfSet(isAbsent ? "secret store absent" : "secret store");
    }
}

FoundSecret SecretServiceClient::find(const SecretName &name)
{
    FoundSecret found;
    guint64 newestTime = 0;
    for (const auto &item : search(m_service.get(), name, SECRET_SEARCH_LOAD_SECRETS)) {
        if (secret_item_get_locked(item.get())) {
            found.isAnyLocked = true;
            continue;
        }
        const SecretValuePointer value(secret_item_get_secret(item.get()));
        const guint64 time = secret_item_get_modified(item.get());
        if (!value || (found.newest && time < newestTime))
            continue;
        gsize length = 0;
        const char *const bytes = secret_value_get(value.get(), &length);
        found.newest = QByteArray(bytes, qsizetype(length));
        newestTime = time;
    }
    return found;
}

bool SecretServiceClient::isDefaultCollectionReady()
{
    const auto collection = defaultCollection(m_service.get());
    return collection && !secret_collection_get_locked(collection.get());
}

void SecretServiceClient::store(const SecretName &name, const QByteArray &value)
{
    const SecretValuePointer secret(secret_value_new(value.constData(), value.size(), "text/plain"));
    ErrorSlot error;
    secret_service_store_sync(m_service.get(), &kSchema, attributes(name).get(), SECRET_COLLECTION_DEFAULT,
                              "Talvenor", secret.get(), nullptr, error);
    error.throwIfSet();
}

bool SecretServiceClient::remove(const SecretName &name)
{
    bool isAnyLeft = false;
    for (const auto &item : search(m_service.get(), name, SECRET_SEARCH_NONE)) {
        if (secret_item_get_locked(item.get())) {
            isAnyLeft = true;
            continue;
        }
        ErrorSlot error;
        secret_item_delete_sync(item.get(), nullptr, error);
        error.throwIfSet();
    }
    return !isAnyLeft;
}

bool SecretServiceClient::unlock(const SecretName &name)
{
    const Items items = search(m_service.get(), name, SECRET_SEARCH_NONE);
    const auto collection = defaultCollection(m_service.get());
    GList *locked = nullptr;
    for (const auto &item : items) {
        if (secret_item_get_locked(item.get()))
            locked = g_list_prepend(locked, item.get());
    }
    if (collection && secret_collection_get_locked(collection.get()))
        locked = g_list_prepend(locked, collection.get());
    const auto wanted = int(g_list_length(locked));
    ErrorSlot error;
    const int unlocked =
        wanted == 0 ? 0 : secret_service_unlock_sync(m_service.get(), locked, nullptr, nullptr, error);
    g_list_free(locked);
    error.throwIfSet();
    return unlocked == wanted;
}

} // namespace talvenor
