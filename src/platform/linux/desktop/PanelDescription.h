#pragma once

#include "platform/FilePanels.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace talvenor {

/// What one panel is to ask for, whoever shows it.
struct PanelDescription
{
    enum class Kind { saveFile = 1, chooseFolder };

    Kind kind;
    QString title;                   ///< what it is for; empty for the usual words
    QString name;                    ///< of a file to save, as it is to be shown
    QList<ContentType> contentTypes; ///< of a file to save; empty for all
};

/// The name of a content type for people, in the system's language.
[[nodiscard]] QString displayName(ContentType type);
/// The type's name among MIME types.
[[nodiscard]] QString mimeType(ContentType type);
/// The patterns of names that files of the type have.
[[nodiscard]] QStringList namePatterns(ContentType type);

} // namespace talvenor
