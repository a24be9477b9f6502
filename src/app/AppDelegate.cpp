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

    const QIcon icon(QStringLiteral(":/talvenor/AppIcon.png"));
    if (!icon.isNull())
        QGuiApplication::setWindowIcon(icon);

    startTask(this, []() -> Task<> { co_await PermissionService::shared().checkScreenCapture(); });
}

} // namespace talvenor
