#include "app/TalvenorApp.h"

#include "app/AppDelegate.h"
#include "app/LinuxPlatform.h"
#include "audio/PermissionService.h"
#include "foundation/Task.h"
#include "screens/Accessibility.h"
#include "screens/ContentState.h"
#include "screens/ScreensModule.h"
#include "store/StorageService.h"

#include <QApplication>
#include <QFontDatabase>
#include <QQmlApplicationEngine>

#include <cstdio>
#include <cstdlib>

namespace talvenor {

namespace {

/// Stands in while Qt looks for a display: where there is none it would end the process with an abort.
void explainMissingDisplay(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(message));
        return;
    }
    std::fputs(
        "Talvenor: there is no display on which to open the window. Start it in a desktop session, or set "
        "DISPLAY or WAYLAND_DISPLAY.\n",
        stderr);
    std::fflush(nullptr);
    std::_Exit(1);
}

int showWindow(QApplication &application)
{
    AppDelegate delegate;
    QApplication::setQuitOnLastWindowClosed(delegate.applicationShouldTerminateAfterLastWindowClosed());
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &delegate,
                     &AppDelegate::applicationWillTerminate);

    // The list is loaded before the first screen draws, whoever is signed in.
    ContentState content;
    delegate.applicationDidFinishLaunching();

    initializeScreens();
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine.setInitialProperties({{QStringLiteral("content"), QVariant::fromValue(&content)}});
    installAccessibility();
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Talvenor/MainWindow.qml")));
    if (engine.rootObjects().isEmpty()) {
        std::fputs("Talvenor: the window could not be made; its parts of Qt are missing or broken.\n",
                   stderr);
        return 1;
    }
    startTask(&content, []() -> Task<> { co_await PermissionService::shared().requestAllPermissions(); });
    return QApplication::exec();
}

} // namespace

int TalvenorApp::run(int argc, char **argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("talvenor"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Talvenor"));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.talvenor.Talvenor"));
    const QtMessageHandler usual = qInstallMessageHandler(explainMissingDisplay);
    QApplication application(argc, argv);
    qInstallMessageHandler(usual);
    // The face that the screens are drawn for, where it is installed.
    if (QFontDatabase::families().contains(QStringLiteral("Inter")))
        QApplication::setFont(QFont(QStringLiteral("Inter")));
    installLinuxPlatform();
    const int code = showWindow(application);
    StorageService::shared().waitUntilSaved();
    return code;
}

} // namespace talvenor
