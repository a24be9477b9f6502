#include "platform/linux/desktop/DialogFilePanel.h"

#include <QDir>
#include <QLineEdit>
#include <QStandardPaths>

namespace talvenor {

namespace {

/// The folder that a panel opens on: the one of the last answer, else the user's documents, else the home.
QString &startFolder()
{
    static QString folder = [] {
        const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        return QDir(documents).exists() ? documents : QDir::homePath();
    }();
    return folder;
}

QStringList nameFilters(const QList<ContentType> &types)
{
    QStringList filters;
    for (const ContentType type : types)
        filters.append(displayName(type) + QStringLiteral(" (") + namePatterns(type).join(u' ') + u')');
    return filters;
}

} // namespace

DialogFilePanel::DialogFilePanel(const PanelDescription &description, QWindow *owner,
                                 FilePanels::Completion completion, QObject *parent)
    : QObject(parent), m_completion(std::move(completion))
{
    // The toolkit's own "native" dialogs would bring in the theme plugins of whatever desktop runs.
    m_dialog.setOption(QFileDialog::DontUseNativeDialog);
    m_dialog.setDirectory(startFolder());
    if (!description.title.isEmpty())
        m_dialog.setWindowTitle(description.title);
    switch (description.kind) {
    case PanelDescription::Kind::saveFile:
        m_dialog.setAcceptMode(QFileDialog::AcceptSave);
        m_dialog.setFileMode(QFileDialog::AnyFile);
        if (!description.contentTypes.isEmpty())
            m_dialog.setNameFilters(nameFilters(description.contentTypes));
        // Not by selectFile, which would go where a name with a slash points.
        if (auto *field = m_dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))) {
            field->setText(description.name);
            field->selectAll();
        }
        break;
    case PanelDescription::Kind::chooseFolder:
        m_dialog.setAcceptMode(QFileDialog::AcceptOpen);
        m_dialog.setFileMode(QFileDialog::Directory);
        m_dialog.setOption(QFileDialog::ShowDirsOnly);
        break;
    }
    if (owner != nullptr) {
        static_cast<void>(m_dialog.winId()); // makes the window that is told its owner here
        m_dialog.windowHandle()->setTransientParent(owner);
    }
    connect(&m_dialog, &QDialog::finished, this, &DialogFilePanel::finish);
    m_dialog.open();
}

void DialogFilePanel::finish(int result)
{
    const QStringList files = result == QDialog::Accepted ? m_dialog.selectedFiles() : QStringList();
    if (!files.isEmpty())
        startFolder() = m_dialog.directory().absolutePath();
    deleteLater();
    const auto completion = std::exchange(m_completion, {});
    completion(result == QDialog::Accepted ? PanelResponse::ok : PanelResponse::cancel,
               files.isEmpty() ? std::nullopt : std::optional(files.first()));
}

} // namespace talvenor
