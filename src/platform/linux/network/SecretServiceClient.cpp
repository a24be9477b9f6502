#include "platform/linux/network/SecretServiceClient.h"

#include "foundation/LocalizedError.h"

#include <QList>

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

/// Object paths of items in the store.
struct Paths
{
    QList<QByteArray> unlocked;
    QList<QByteArray> locked;
};

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

QList<QByteArray> taken(gchar **paths)
{
    QList<QByteArray> list;
    for (gchar **path = paths; path && *path; ++path)
        list.append(QByteArray(*path));
    g_strfreev(paths);
    return list;
}

/// Object paths are used instead of libsecret's item objects, each of which subscribes to signals and leaves
/// something of that behind when it is freed on a thread without an event loop.
Paths search(SecretService *service, const SecretName &name)
{
    ErrorSlot error;
    gchar **unlocked = nullptr;
    gchar **locked = nullptr;
    secret_service_search_for_dbus_paths_sync(service, &kSchema, attributes(name).get(), nullptr, &unlocked,
                                              &locked, error);
    Paths paths{taken(unlocked), taken(locked)};
    error.throwIfSet();
    return paths;
}

GVariantPointer property(SecretService *service, const QByteArray &path, const char *interface,
                         const char *name)
{
    ErrorSlot error;
    const GVariantPointer reply(g_dbus_connection_call_sync(
        g_dbus_proxy_get_connection(G_DBUS_PROXY(service)), g_dbus_proxy_get_name(G_DBUS_PROXY(service)),
        path.constData(), "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", interface, name),
        G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, error));
    error.throwIfSet();
    GVariant *value = nullptr;
    g_variant_get(reply.get(), "(v)", &value);
    return GVariantPointer(value);
}

/// The default collection's path; empty if there is none.
QByteArray defaultCollection(SecretService *service)
{
    ErrorSlot error;
    gchar *const path =
        secret_service_read_alias_dbus_path_sync(service, SECRET_COLLECTION_DEFAULT, nullptr, error);
    QByteArray collection(path);
    g_free(path);
    error.throwIfSet();
    return collection == "/" ? QByteArray() : collection;
}

bool isCollectionLocked(SecretService *service, const QByteArray &collection)
{
    const auto locked = property(service, collection, "org.freedesktop.Secret.Collection", "Locked");
    return g_variant_is_of_type(locked.get(), G_VARIANT_TYPE_BOOLEAN) && g_variant_get_boolean(locked.get());
}

guint64 modificationTime(SecretService *service, const QByteArray &item)
{
    const auto time = property(service, item, "org.freedesktop.Secret.Item", "Modified");
    return g_variant_is_of_type(time.get(), G_VARIANT_TYPE_UINT64) ? g_variant_get_uint64(time.get()) : 0;
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
    const Paths paths = search(m_service.get(), name);
    FoundSecret found;
    found.isAnyLocked = !paths.locked.isEmpty();
    guint64 newestTime = 0;
    for (const QByteArray &item : paths.unlocked) {
        // Usually there is one, whose time does not matter.
        const guint64 time = paths.unlocked.size() > 1 ? modificationTime(m_service.get(), item) : 0;
        if (found.newest && time < newestTime)
            continue;
        ErrorSlot error;
        const SecretValuePointer value(
            secret_service_get_secret_for_dbus_path_sync(m_service.get(), item.constData(), nullptr, error));
        error.throwIfSet();
        if (!value)
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
    const QByteArray collection = defaultCollection(m_service.get());
    return !collection.isEmpty() && !isCollectionLocked(m_service.get(), collection);
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
    const Paths paths = search(m_service.get(), name);
    for (const QByteArray &item : paths.unlocked) {
        ErrorSlot error;
        secret_service_delete_item_dbus_path_sync(m_service.get(), item.constData(), nullptr, error);
        error.throwIfSet();
    }
    return paths.locked.isEmpty();
}

bool SecretServiceClient::unlock(const SecretName &name)
{
    QList<QByteArray> locked = search(m_service.get(), name).locked;
    const QByteArray collection = defaultCollection(m_service.get());
    if (!collection.isEmpty() && isCollectionLocked(m_service.get(), collection))
        locked.append(collection);
    if (locked.isEmpty())
        return true;
    std::vector<const gchar *> paths;
    for (const QByteArray &path : locked)
        paths.push_back(path.constData());
    paths.push_back(nullptr);
    ErrorSlot error;
    const int unlocked =
        secret_service_unlock_dbus_paths_sync(m_service.get(), paths.data(), nullptr, nullptr, error);
    error.throwIfSet();
    return unlocked == int(locked.size());
}

} // namespace talvenor
