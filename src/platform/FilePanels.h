#pragma once

#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace talvenor {

/// How a panel was closed.
enum class PanelResponse { ok, cancel };

/// A kind of file that a panel offers.
enum class ContentType { plainText };

/// What a save panel is to offer.
struct SavePanelRequest
{
    QList<ContentType> allowedContentTypes;
    QString nameFieldStringValue; ///< the suggested name, shown as it is given, whatever is in it
};

/// The desktop's dialogs for choosing files and folders. Main thread; panels never block.
class FilePanels
{
public:
    using Completion = std::function<void(PanelResponse response, std::optional<QString> path)>;

    FilePanels() = default;
    FilePanels(const FilePanels &) = delete;
    FilePanels &operator=(const FilePanels &) = delete;
    virtual ~FilePanels() = default;

    /// Asks for a file to write. `completion` is called once, on the main thread.
    virtual void beginSavePanel(const SavePanelRequest &request, Completion completion) = 0;

    /// Asks for an existing or new folder. `message` says what for; `completion` as above.
    virtual void beginFolderPanel(const QString &message, Completion completion) = 0;
};

} // namespace talvenor
