#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVariant>

namespace talvenor::test {

/// The settings portal of a desktop that knows one setting, the colour scheme, on a connection of its own.
class FakeSettingsPortal : public QDBusVirtualObject
{
    Q_OBJECT

public:
    FakeSettingsPortal();
    ~FakeSettingsPortal() override;
    Q_DISABLE_COPY_MOVE(FakeSettingsPortal)

    static QString appearance() { return QStringLiteral("org.freedesktop.appearance"); }
    static QString colorScheme() { return QStringLiteral("color-scheme"); }

    /// The setting's value; invalid if the portal does not know it.
    QVariant value;

    /// How often the setting was asked for.
    [[nodiscard]] int reads() const { return m_reads; }
    /// Tells everybody that a setting has changed.
    void change(const QString &space, const QString &key, const QVariant &newValue);

    [[nodiscard]] QString introspect(const QString & /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    QString m_connectionName;
    QDBusConnection m_bus;
    int m_reads = 0;
};

} // namespace talvenor::test
