#include "FakePortal.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QUuid>

namespace talvenor::test {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString root = QStringLiteral("/org/freedesktop/portal/desktop");
const QString chooser = QStringLiteral("org.freedesktop.portal.FileChooser");
const QString request = QStringLiteral("org.freedesktop.portal.Request");

} // namespace

FakePortal::FakePortal()
    : m_connectionName(QUuid::createUuid().toString()),
      m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connectionName))
{
    if (!m_bus.registerVirtualObject(root, this, QDBusConnection::SubPath) || !m_bus.registerService(service))
        qFatal("the portal cannot be put on the bus");
}

FakePortal::~FakePortal()
{
    disappear();
}

void FakePortal::disappear()
{
    m_bus.unregisterObject(root);
    m_bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(m_connectionName);
}

QString FakePortal::introspect(const QString & /*path*/) const
{
    return {};
}

bool FakePortal::handleMessage(const QDBusMessage &message, const QDBusConnection & /*connection*/)
{
    if (message.interface() == request && message.member() == u"Close") {
        m_closed.append(message.path());
        m_bus.send(message.createReply());
        return true;
    }
    if (behaviour == Behaviour::noFileChooser)
        return false;
    if (message.member() == u"Get" && message.arguments().value(0).toString() == chooser) {
        m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(version))));
        return true;
    }
    if (message.interface() != chooser)
        return false;
    handleChooser(message);
    return true;
}

void FakePortal::handleChooser(const QDBusMessage &message)
{
    m_caller = message.service();
    const QVariantList arguments = message.arguments();
    const QVariantMap options = qdbus_cast<QVariantMap>(arguments.value(2));
    QString sender = m_caller.mid(1);
    sender.replace(u'.', u'_');
    const QString token = behaviour == Behaviour::ownPath
                              ? QStringLiteral("own")
                              : options.value(QStringLiteral("handle_token")).toString();
    const QString path = root + QStringLiteral("/request/%1/%2").arg(sender, token);
    m_calls.append(
        {message.member(), arguments.value(0).toString(), arguments.value(1).toString(), options, path});
    switch (behaviour) {
    case Behaviour::refuse:
        m_bus.send(message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("not for you")));
        return;
    case Behaviour::hang:
        return;
    case Behaviour::answerFirst:
        respond(path);
        m_bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(path))));
        return;
    case Behaviour::wait:
    case Behaviour::accept:
    case Behaviour::ownPath:
    case Behaviour::noFileChooser:
        break;
    }
    m_bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(path))));
    if (behaviour == Behaviour::accept)
        respond(path);
}

void FakePortal::respond(const QString &requestPath)
{
    QDBusMessage signal =
        QDBusMessage::createTargetedSignal(m_caller, requestPath, request, QStringLiteral("Response"));
    signal << code << results;
    m_bus.send(signal);
}

} // namespace talvenor::test
