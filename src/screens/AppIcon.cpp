#include "screens/AppIcon.h"

#include <QFile>

namespace talvenor {

QUrl AppIcon::source() const
{
    return QFile::exists(QStringLiteral(":/talvenor/AppIcon.png"))
               ? QUrl(QStringLiteral("qrc:/talvenor/AppIcon.png"))
               : QUrl();
}

} // namespace talvenor
