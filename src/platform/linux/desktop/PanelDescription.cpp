#include "platform/linux/desktop/PanelDescription.h"

#include "foundation/ProgrammingError.h"

#include <QMimeDatabase>

namespace talvenor {

QString displayName(ContentType type)
{
    const QString comment = QMimeDatabase().mimeTypeForName(mimeType(type)).comment();
    return comment.isEmpty() ? mimeType(type) : comment;
}

QString mimeType(ContentType type)
{
    switch (type) {
    case ContentType::plainText:
        return QStringLiteral("text/plain");
    }
    programmingError(QStringLiteral("a content type outside its enumeration"));
}

QStringList namePatterns(ContentType type)
{
    switch (type) {
    case ContentType::plainText:
        // Markdown is plain text too, but not by its names.
        return {QStringLiteral("*.md"), QStringLiteral("*.txt")};
    }
    programmingError(QStringLiteral("a content type outside its enumeration"));
}

} // namespace talvenor
