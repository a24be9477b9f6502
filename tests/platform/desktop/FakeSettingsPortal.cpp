#include "FakeSettingsPortal.h"

#include <QDBusError>
#include <QDBusVariant>
#include <QUuid>

namespace talvenor::test {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");

} // namespace

FakeSettingsPortal::FakeSettingsPortal()
    : m_connectionName(QUuid::createUuid().toString()),
      m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connectionName))
{
    if (!m_bus.registerVirtualObject(path, this) || !m_bus.registerService(service))
        qFatal("the portal cannot be put on the bus");
}

FakeSettingsPortal::~FakeSettingsPortal()
{
    m_bus.unregisterObject(path);
    m_bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(m_connectionName);
}

void FakeSettingsPortal::change(const QString &space, const QString &key, const QVariant &newValue)
{
    QDBusMessage notice = QDBusMessage::createSignal(path, settings, QStringLiteral("SettingChanged"));
    notice << space << key << QVariant::fromValue(QDBusVariant(newValue));
    m_bus.send(notice);
}

bool FakeSettingsPortal::handleMessage(const QDBusMessage &message, const QDBusConnection & /*connection*/)
{
    if (message.interface() != settings || message.member() != u"Read")
        return false;
    ++m_reads;
    if (message.arguments() != QVariantList{appearance(), colorScheme()} || !value.isValid()) {
        m_bus.send(message.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                                            QStringLiteral("no such setting")));
        return true;
    }
    // This method wraps its value twice, as the portals have done from their first version on.
    const QVariant inner = QVariant::fromValue(QDBusVariant(value));
    m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(inner))));
    return true;
}

} // namespace talvenor::test
