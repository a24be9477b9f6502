#include "platform/linux/desktop/PortalFilePanel.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QFileDialog>
#include <QUrl>
#include <QUuid>

namespace talvenor {

// Names, signatures and the meaning of the numbers are those of the portals' published interface
// descriptions, org.freedesktop.portal.FileChooser and org.freedesktop.portal.Request.

/// One pattern of a filter: kind 0 is a pattern of names, kind 1 a MIME type.
struct PortalFilterRule
{
    uint kind = 0;
    QString pattern;
};

/// A named set of patterns.
struct PortalFilter
{
    QString name;
    QList<PortalFilterRule> rules;
};

} // namespace talvenor

Q_DECLARE_METATYPE(talvenor::PortalFilterRule)
Q_DECLARE_METATYPE(talvenor::PortalFilter)

namespace talvenor {

QDBusArgument &operator<<(QDBusArgument &argument, const PortalFilterRule &rule)
{
    argument.beginStructure();
    argument << rule.kind << rule.pattern;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, PortalFilterRule &rule)
{
    argument.beginStructure();
    argument >> rule.kind >> rule.pattern;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const PortalFilter &filter)
{
    argument.beginStructure();
    argument << filter.name << filter.rules;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, PortalFilter &filter)
{
    argument.beginStructure();
    argument >> filter.name >> filter.rules;
    argument.endStructure();
    return argument;
}

namespace {

const QString &service()
{
    static const QString name = QStringLiteral("org.freedesktop.portal.Desktop");
    return name;
}

const QString &fileChooser()
{
    static const QString name = QStringLiteral("org.freedesktop.portal.FileChooser");
    return name;
}

const QString &requestInterface()
{
    static const QString name = QStringLiteral("org.freedesktop.portal.Request");
    return name;
}

QDBusMessage methodCall(const QString &interface, const QString &method)
{
    return QDBusMessage::createMethodCall(service(), QStringLiteral("/org/freedesktop/portal/desktop"),
                                          interface, method);
}

QList<PortalFilter> filters(const QList<ContentType> &types)
{
    QList<PortalFilter> result;
    for (const ContentType type : types) {
        PortalFilter filter{displayName(type), {{1, mimeType(type)}}};
        for (const QString &pattern : namePatterns(type))
            filter.rules.append({0, pattern});
        result.append(filter);
    }
    return result;
}

} // namespace

PortalFilePanel::PortalFilePanel(PanelDescription description, const QString &ownerIdentifier,
                                 std::chrono::milliseconds patience, FilePanels::Completion completion,
                                 Unavailable unavailable, QObject *parent)
    : QObject(parent), m_description(std::move(description)), m_ownerIdentifier(ownerIdentifier),
      m_patience(patience), m_completion(std::move(completion)), m_unavailable(std::move(unavailable)),
      m_token(QStringLiteral("talvenor_") + QUuid::createUuid().toString(QUuid::Id128))
{
    [[maybe_unused]] static const bool areTypesRegistered = [] {
        qDBusRegisterMetaType<PortalFilterRule>();
        qDBusRegisterMetaType<QList<PortalFilterRule>>();
        qDBusRegisterMetaType<PortalFilter>();
        qDBusRegisterMetaType<QList<PortalFilter>>();
        return true;
    }();
    // The question for the version also finds out whether there is a portal at all, and starts it if it can
    // be started.
    QDBusMessage message =
        methodCall(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message << fileChooser() << QStringLiteral("version");
    call(message, [this](const QDBusMessage &reply) {
        askForPanel(reply.arguments().value(0).value<QDBusVariant>().variant().toUInt());
    });
}

void PortalFilePanel::call(const QDBusMessage &message,
                           std::function<void(const QDBusMessage &reply)> answered)
{
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message, int(m_patience.count())), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, answered = std::move(answered)] {
                watcher->deleteLater();
                if (m_isOver)
                    return;
                if (watcher->isError())
                    giveUp(watcher->error().message());
                else
                    answered(watcher->reply());
            });
}

void PortalFilePanel::askForPanel(uint version)
{
    const bool isFolder = m_description.kind == PanelDescription::Kind::chooseFolder;
    // Older portals do not know of folders and would offer files.
    constexpr uint firstVersionWithFolders = 3;
    if (isFolder && version < firstVersionWithFolders) {
        giveUp(QStringLiteral("the portal cannot choose folders"));
        return;
    }
    // The answer may come before the reply to the call: its path is known beforehand.
    QString sender = m_bus.baseService().mid(1);
    sender.replace(u'.', u'_');
    m_requestPath = QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, m_token);
    expectResponseAt(m_requestPath);
    auto *watcher =
        new QDBusServiceWatcher(service(), m_bus, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        if (!m_isOver)
            giveUp(QStringLiteral("the portal has gone"));
    });

    QVariantMap options{{QStringLiteral("handle_token"), m_token}, {QStringLiteral("modal"), true}};
    QString title = m_description.title;
    if (isFolder) {
        options.insert(QStringLiteral("directory"), true);
    } else {
        options.insert(QStringLiteral("current_name"), m_description.name);
        if (!m_description.contentTypes.isEmpty())
            options.insert(QStringLiteral("filters"),
                           QVariant::fromValue(filters(m_description.contentTypes)));
        if (title.isEmpty())
            title = QFileDialog::tr("Save As");
    }
    QDBusMessage message =
        methodCall(fileChooser(), isFolder ? QStringLiteral("OpenFile") : QStringLiteral("SaveFile"));
    message << m_ownerIdentifier << title << options;
    call(message, [this](const QDBusMessage &reply) {
        const QString path = reply.arguments().value(0).value<QDBusObjectPath>().path();
        // Very old portals choose a path of their own.
        if (!path.isEmpty() && path != m_requestPath) {
            m_requestPath = path;
            expectResponseAt(path);
        }
    });
}

void PortalFilePanel::expectResponseAt(const QString &requestPath)
{
    m_bus.connect(service(), requestPath, requestInterface(), QStringLiteral("Response"), this,
                  SLOT(receiveResponse(uint, QVariantMap)));
}

void PortalFilePanel::receiveResponse(uint code, const QVariantMap &results)
{
    if (m_isOver)
        return;
    // 0 is success, 1 the user's refusal, 2 any other end.
    if (code != 0) {
        finish(PanelResponse::cancel, std::nullopt);
        return;
    }
    const QUrl url(results.value(QStringLiteral("uris")).toStringList().value(0));
    finish(PanelResponse::ok, url.isLocalFile() ? std::optional(url.toLocalFile()) : std::nullopt);
}

void PortalFilePanel::finish(PanelResponse response, const std::optional<QString> &path)
{
    m_isOver = true;
    deleteLater();
    const auto completion = std::exchange(m_completion, {});
    completion(response, path);
}

void PortalFilePanel::giveUp(const QString &reason)
{
    m_isOver = true;
    deleteLater();
    // A portal that is only slow must not show a second panel later. Nobody waits for the answer to this.
    if (!m_requestPath.isEmpty())
        m_bus.send(QDBusMessage::createMethodCall(service(), m_requestPath, requestInterface(),
                                                  QStringLiteral("Close")));
    const auto unavailable = std::exchange(m_unavailable, {});
    unavailable(reason);
}

} // namespace talvenor
