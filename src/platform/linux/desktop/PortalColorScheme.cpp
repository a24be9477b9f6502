#include "platform/linux/desktop/PortalColorScheme.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

namespace talvenor {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");

/// The value within any number of variants: `Read` wraps it twice, notices wrap it once.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

PortalColorScheme::PortalColorScheme()
{
    // Listening comes before asking, so that no change falls between the two.
    m_bus.connect(service, path, settings, QStringLiteral("SettingChanged"), this,
                  SLOT(receiveSetting(QString, QString, QDBusVariant)));
    auto *watcher = new QDBusServiceWatcher(service, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &PortalColorScheme::ask);
    ask();
}

void PortalColorScheme::ask()
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, settings, QStringLiteral("Read"));
    message << appearance << colorScheme;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        // Without a portal, or with one that does not know the key, nothing is preferred.
        if (!watcher->isError())
            take(watcher->reply().arguments().value(0));
    });
}

void PortalColorScheme::receiveSetting(const QString &space, const QString &key, const QDBusVariant &value)
{
    if (space == appearance && key == colorScheme)
        take(value.variant());
}

void PortalColorScheme::take(const QVariant &value)
{
    const QVariant number = unwrapped(value);
    if (number.typeId() != QMetaType::UInt)
        return;
    constexpr uint dark = 1;
    constexpr uint light = 2;
    std::optional<ColorScheme> preferred;
    if (number.toUInt() == dark)
        preferred = ColorScheme::dark;
    else if (number.toUInt() == light)
        preferred = ColorScheme::light;
    if (preferred == m_preferred)
        return;
    m_preferred = preferred;
    if (m_changed)
        m_changed();
}

} // namespace talvenor
