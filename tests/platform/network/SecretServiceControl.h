#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

namespace talvenor::test {

/// The secret store as another program sees it: straight over the session bus, without the library that is
/// under test. Failures of the bus end the test program.
class SecretServiceControl
{
public:
    /// The object paths of all items with these two attributes.
    [[nodiscard]] static QStringList items(const QString &service, const QString &account);
    [[nodiscard]] static QMap<QString, QString> attributesOf(const QString &item);
    [[nodiscard]] static bool isLocked(const QString &item);

    /// Locks the default collection.
    static void lock();
    /// Unlocks it with the password that the virtual desktop has set, as signing in to a desktop does.
    static void unlock();

    /// Lets the store hang: it takes calls and answers none.
    static void freeze();
    /// Lets it go on with what it has been asked meanwhile.
    static void thaw();
};

} // namespace talvenor::test
