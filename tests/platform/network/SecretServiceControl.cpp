#include "SecretServiceControl.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

#include <csignal>

namespace talvenor::test {

namespace {

const auto kBusName = QStringLiteral("org.freedesktop.secrets");
const auto kServicePath = QStringLiteral("/org/freedesktop/secrets");
const auto kServiceInterface = QStringLiteral("org.freedesktop.Secret.Service");
const auto kItemInterface = QStringLiteral("org.freedesktop.Secret.Item");

using Attributes = QMap<QString, QString>;

/// The Secret Service's form of a value, in a session without encryption.
struct Secret
{
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString contentType;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Secret &secret)
{
    argument.beginStructure();
    argument << secret.session << secret.parameters << secret.value << secret.contentType;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Secret &secret)
{
    argument.beginStructure();
    argument >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
    argument.endStructure();
    return argument;
}

QDBusMessage call(const QString &path, const QString &interface, const QString &method,
                  const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(kBusName, path, interface, method);
    message.setArguments(arguments);
    QDBusMessage reply = QDBusConnection::sessionBus().call(message);
    if (reply.type() != QDBusMessage::ReplyMessage)
        qFatal("%s: %s", qPrintable(method), qPrintable(reply.errorMessage()));
    return reply;
}

QVariant itemProperty(const QString &item, const QString &name)
{
    return call(item, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                {kItemInterface, name})
        .arguments()
        .constFirst()
        .value<QDBusVariant>()
        .variant();
}

QDBusObjectPath defaultCollection()
{
    return call(kServicePath, kServiceInterface, QStringLiteral("ReadAlias"), {QStringLiteral("default")})
        .arguments()
        .constFirst()
        .value<QDBusObjectPath>();
}

} // namespace

QStringList SecretServiceControl::items(const QString &service, const QString &account)
{
    qDBusRegisterMetaType<Attributes>();
    const Attributes attributes{{QStringLiteral("service"), service}, {QStringLiteral("account"), account}};
    const QVariantList found = call(kServicePath, kServiceInterface, QStringLiteral("SearchItems"),
                                    {QVariant::fromValue(attributes)})
                                   .arguments();
    QStringList paths;
    for (const QVariant &list : found) { // the unlocked ones, then the locked ones
        for (const QDBusObjectPath &path : qdbus_cast<QList<QDBusObjectPath>>(list))
            paths.append(path.path());
    }
    return paths;
}

QMap<QString, QString> SecretServiceControl::attributesOf(const QString &item)
{
    return qdbus_cast<Attributes>(itemProperty(item, QStringLiteral("Attributes")));
}

bool SecretServiceControl::isLocked(const QString &item)
{
    return itemProperty(item, QStringLiteral("Locked")).toBool();
}

void SecretServiceControl::lock()
{
    (void)call(kServicePath, kServiceInterface, QStringLiteral("Lock"),
               {QVariant::fromValue(QList<QDBusObjectPath>{defaultCollection()})});
}

void SecretServiceControl::unlock()
{
    qDBusRegisterMetaType<Secret>();
    const auto session = call(kServicePath, kServiceInterface, QStringLiteral("OpenSession"),
                              {QStringLiteral("plain"), QVariant::fromValue(QDBusVariant(QString()))})
                             .arguments()
                             .at(1)
                             .value<QDBusObjectPath>();
    const Secret password{session, {}, QByteArrayLiteral("keyring"), QStringLiteral("text/plain")};
    // The interface by which the keyring is unlocked at sign-in; there is no official one without a prompt.
    (void)call(kServicePath, QStringLiteral("org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface"),
               QStringLiteral("UnlockWithMasterPassword"),
               {QVariant::fromValue(defaultCollection()), QVariant::fromValue(password)});
}

namespace {

void signalService(int signal)
{
    // Kept, because a frozen service cannot be asked for anything, though the bus would still know it.
    static const QDBusReply<uint> processId = QDBusConnection::sessionBus().interface()->servicePid(kBusName);
    if (!processId.isValid() || ::kill(pid_t(processId.value()), signal) != 0)
        qFatal("the secret store's process cannot be signalled");
}

} // namespace

void SecretServiceControl::freeze()
{
    signalService(SIGSTOP);
}

void SecretServiceControl::thaw()
{
    signalService(SIGCONT);
}

} // namespace talvenor::test
