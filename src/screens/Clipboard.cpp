#include "screens/Clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace talvenor {

QString Clipboard::text()
{
    return QGuiApplication::clipboard()->text();
}

QString Clipboard::selection()
{
    const QClipboard &clipboard = *QGuiApplication::clipboard();
    return clipboard.supportsSelection() ? clipboard.text(QClipboard::Selection) : QString();
}

} // namespace talvenor
