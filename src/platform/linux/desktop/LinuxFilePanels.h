#pragma once

#include "platform/FilePanels.h"
#include "platform/linux/desktop/PanelDescription.h"

#include <QObject>

#include <chrono>

namespace talvenor {

/// Panels of the desktop's portal where there is one on the session bus, else Qt's own dialogs, which need a
/// QApplication.
///
/// Any number may be open. Those still open when this object ends are closed without an answer.
class LinuxFilePanels : public QObject, public FilePanels
{
    Q_OBJECT

public:
    /// `portalPatience` is how long the portal may take to answer a call; the user's own time is not counted.
    explicit LinuxFilePanels(std::chrono::milliseconds portalPatience = std::chrono::seconds(5));

    void beginSavePanel(const SavePanelRequest &request, Completion completion) override;
    void beginFolderPanel(const QString &message, Completion completion) override;

private:
    void begin(const PanelDescription &description, Completion completion);
    void beginDialog(const PanelDescription &description, Completion completion);

    std::chrono::milliseconds m_portalPatience;
};

} // namespace talvenor
