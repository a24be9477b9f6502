#pragma once

#include "platform/ColorScheme.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace talvenor {

/// The colour scheme as the settings portal tells it (org.freedesktop.portal.Settings, key "color-scheme" of
/// "org.freedesktop.appearance": 1 is dark, 2 is light, anything else no preference). Main thread.
///
/// It asks at once and whenever a portal comes up, without waiting for the answer, and follows the portal's
/// notices. A portal that goes, refuses or talks nonsense leaves what was known.
class PortalColorScheme : public QObject, public ColorSchemePreference
{
    Q_OBJECT

public:
    PortalColorScheme();

    [[nodiscard]] std::optional<ColorScheme> preferred() const override { return m_preferred; }
    void setListener(std::function<void()> changed) override { m_changed = std::move(changed); }

private Q_SLOTS:
    void receiveSetting(const QString &space, const QString &key, const QDBusVariant &value);

private:
    void ask();
    void take(const QVariant &value);

    QDBusConnection m_bus = QDBusConnection::sessionBus();
    std::optional<ColorScheme> m_preferred;
    std::function<void()> m_changed;
};

} // namespace talvenor
