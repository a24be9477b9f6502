#pragma once

#include "platform/FilePanels.h"
#include "platform/linux/desktop/PanelDescription.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariantMap>

#include <chrono>
#include <functional>

namespace talvenor {

/// A panel of the desktop's own, asked for over the session bus from the file chooser portal
/// (org.freedesktop.portal.FileChooser). Main thread.
///
/// Exactly one of the two functions is called, once, from the event loop: the completion with the user's
/// answer, or `unavailable` with the reason when there is no portal, it refuses, it does not take the request
/// within `patience`, or it vanishes before the answer. Deletes itself after that.
class PortalFilePanel : public QObject
{
    Q_OBJECT

public:
    using Unavailable = std::function<void(const QString &reason)>;

    /// `ownerIdentifier` names the window in front of which the panel belongs, in the portal's own form;
    /// empty for none.
    PortalFilePanel(PanelDescription description, const QString &ownerIdentifier,
                    std::chrono::milliseconds patience, FilePanels::Completion completion,
                    Unavailable unavailable, QObject *parent);

private Q_SLOTS:
    void receiveResponse(uint code, const QVariantMap &results);

private:
    void call(const QDBusMessage &message, std::function<void(const QDBusMessage &reply)> answered);
    void askForPanel(uint version);
    void expectResponseAt(const QString &requestPath);
    void finish(PanelResponse response, const std::optional<QString> &path);
    void giveUp(const QString &reason);

    QDBusConnection m_bus = QDBusConnection::sessionBus();
    PanelDescription m_description;
    QString m_ownerIdentifier;
    std::chrono::milliseconds m_patience;
    FilePanels::Completion m_completion;
    Unavailable m_unavailable;
    QString m_token;       ///< our part of the request's path
    QString m_requestPath; ///< empty until the panel is asked for
    bool m_isOver = false;
};

} // namespace talvenor
