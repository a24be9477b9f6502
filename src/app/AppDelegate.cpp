#include "app/AppDelegate.h"

#include "audio/PermissionService.h"
#include "foundation/Task.h"
#include "settings/AppSettings.h"

#include <QGuiApplication>
#include <QIcon>

namespace talvenor {

void AppDelegate::applicationDidFinishLaunching()
{
    // Both are read for their effect: what is missing of the folders is made.
    AppSettings &settings = AppSettings::shared();
    (void)settings.storageURL();
    (void)settings.audioDirectory();

    QIcon icon(QStringLiteral(":/talvenor/AppIcon.png"));
    // Task bars show small icons, which have drawings of their own.
    for (const int size : {16, 22, 24, 32, 48, 64})
        icon.addFile(QStringLiteral(":/talvenor/icons/%1x%1/talvenor.png").arg(size));
    if (!icon.isNull())
        QGuiApplication::setWindowIcon(icon);

    startTask(this, []() -> Task<> { co_await PermissionService::shared().checkScreenCapture(); });
}

} // namespace talvenor
