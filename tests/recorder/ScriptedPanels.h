#pragma once

#include "platform/FilePanels.h"

#include <QList>

namespace talvenor::test {

/// File panels that a test answers itself. Main thread.
class ScriptedPanels : public FilePanels
{
public:
    struct Panel
    {
        SavePanelRequest request;
        Completion completion;
    };
    QList<Panel> panels; ///< the save panels opened so far

    void beginSavePanel(const SavePanelRequest &request, Completion completion) override
    {
        panels.append({request, std::move(completion)});
    }
    void beginFolderPanel(const QString &, Completion completion) override
    {
        completion(PanelResponse::cancel, std::nullopt);
    }
};

} // namespace talvenor::test
