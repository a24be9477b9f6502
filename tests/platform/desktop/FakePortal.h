#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QList>
#include <QString>
#include <QVariantMap>

namespace talvenor::test {

/// A desktop portal on the session bus that shows nothing and answers as it is told, to provoke what a real
/// one does only with a user before it.
///
/// It has a connection of its own, so that everything goes over the bus as between two processes.
class FakePortal : public QDBusVirtualObject
{
    Q_OBJECT

public:
    enum class Behaviour {
        accept = 1,    ///< returns the request, then answers with `code` and `results`
        answerFirst,   ///< answers before it returns the request
        ownPath,       ///< answers on a path that it has chosen itself
        wait,          ///< returns the request and answers only when told
        refuse,        ///< returns an error
        hang,          ///< never returns
        noFileChooser, ///< has no such interface at all
    };

    FakePortal();
    ~FakePortal() override;
    Q_DISABLE_COPY_MOVE(FakePortal)

    struct Call
    {
        QString method;
        QString parent;
        QString title;
        QVariantMap options;
        QString requestPath;
    };
    [[nodiscard]] const QList<Call> &calls() const { return m_calls; }
    /// The paths of requests that were closed by their caller.
    [[nodiscard]] const QStringList &closed() const { return m_closed; }

    void respond(const QString &requestPath);
    /// Leaves the bus, as a portal that has crashed.
    void disappear();

    Behaviour behaviour = Behaviour::accept;
    uint version = 3;
    uint code = 0;
    QVariantMap results;

    [[nodiscard]] QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void handleChooser(const QDBusMessage &message);

    QString m_connectionName;
    QDBusConnection m_bus;
    QString m_caller;
    QList<Call> m_calls;
    QStringList m_closed;
};

} // namespace talvenor::test
