#include "platform/linux/desktop/LinuxFilePanels.h"

#include "platform/UnifiedLog.h"
#include "platform/linux/desktop/DialogFilePanel.h"
#include "platform/linux/desktop/PortalFilePanel.h"

#include <QApplication>
#include <QDBusConnection>
#include <QWindow>

namespace talvenor {

namespace {

/// The window that the user is working in, in the form in which a portal takes it. Only X11 has a number that
/// other processes understand.
QString ownerIdentifier()
{
    const QWindow *window = QGuiApplication::focusWindow();
    if (window == nullptr || QGuiApplication::platformName() != u"xcb")
        return {};
    return QStringLiteral("x11:") + QString::number(window->winId(), 16);
}

} // namespace

LinuxFilePanels::LinuxFilePanels(std::chrono::milliseconds portalPatience) : m_portalPatience(portalPatience)
{
}

void LinuxFilePanels::beginSavePanel(const SavePanelRequest &request, Completion completion)
{
    begin({.kind = PanelDescription::Kind::saveFile,
           .title = {},
           .name = request.nameFieldStringValue,
           .contentTypes = request.allowedContentTypes},
          std::move(completion));
}

void LinuxFilePanels::beginFolderPanel(const QString &message, Completion completion)
{
    begin({.kind = PanelDescription::Kind::chooseFolder, .title = message, .name = {}, .contentTypes = {}},
          std::move(completion));
}

void LinuxFilePanels::begin(const PanelDescription &description, Completion completion)
{
    if (!QDBusConnection::sessionBus().isConnected()) {
        beginDialog(description, std::move(completion));
        return;
    }
    new PortalFilePanel(
        description, ownerIdentifier(), m_portalPatience, completion,
        [this, description, completion](const QString &reason) {
            qCInfo(platformLog).noquote() << "File panels without the portal:" << reason;
            beginDialog(description, completion);
        },
        this);
}

void LinuxFilePanels::beginDialog(const PanelDescription &description, Completion completion)
{
    if (qobject_cast<QApplication *>(QCoreApplication::instance()) == nullptr) {
        qCCritical(platformLog, "File panels need an application with widgets");
        QMetaObject::invokeMethod(
            this, [completion = std::move(completion)] { completion(PanelResponse::cancel, std::nullopt); },
            Qt::QueuedConnection);
        return;
    }
    new DialogFilePanel(description, QGuiApplication::focusWindow(), std::move(completion), this);
}

} // namespace talvenor
