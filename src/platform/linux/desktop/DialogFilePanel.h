#pragma once

#include "platform/FilePanels.h"
#include "platform/linux/desktop/PanelDescription.h"

#include <QFileDialog>
#include <QObject>
#include <QPointer>
#include <QWindow>

namespace talvenor {

/// A panel that this process draws itself, for desktops without a portal. Needs a QApplication; main thread.
///
/// Shown from its making on; modal to `owner` if there is one. Deletes itself after its answer.
class DialogFilePanel : public QObject
{
    Q_OBJECT

public:
    DialogFilePanel(const PanelDescription &description, QWindow *owner, FilePanels::Completion completion,
                    QObject *parent);

private:
    void finish(int result);

    QFileDialog m_dialog;
    FilePanels::Completion m_completion;
};

} // namespace talvenor
