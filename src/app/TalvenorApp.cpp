#include "app/TalvenorApp.h"

#include "app/AppDelegate.h"
#include "app/LinuxPlatform.h"
#include "audio/PermissionService.h"
#include "foundation/Task.h"
#include "platform/Platform.h"
#include "screens/Accessibility.h"
#include "screens/ContentState.h"
#include "screens/ScreensModule.h"
#include "settings/L10n.h"
#include "store/StorageService.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLockFile>
#include <QMessageBox>
#include <QQmlApplicationEngine>
#include <QStandardPaths>

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

/// Tells a second start in the same session that it is one: two programs would overwrite each other's list.
int tellOfFirstInstance()
{
    const QString text = L10n::isGerman() ? QStringLiteral("Talvenor läuft bereits.")
                                          : QStringLiteral("Talvenor is already running.");
    std::fprintf(stderr, "%s\n", qUtf8Printable(text));
    QMessageBox::information(nullptr, L10n::appName(), text);
    return 1;
}

int runApplication(QApplication &application)
{
    // The face that the screens are drawn for, where it is installed.
    if (QFontDatabase::families().contains(QStringLiteral("Inter")))
        QApplication::setFont(QFont(QStringLiteral("Inter")));
    QLockFile session(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
                      QStringLiteral("/talvenor.lock"));
    session.setStaleLockTime(0); // a session may last for days; the lock of a dead process is still noticed
    if (!session.tryLock(0) && session.error() == QLockFile::LockFailedError)
        return tellOfFirstInstance();
    installLinuxPlatform();
    const int code = showWindow(application);
    StorageService::shared().waitUntilSaved();
    // An open panel is a window and cannot outlive the application object, nor can what listens on the
    // session bus.
    Platform::shared().filePanels.reset();
    Platform::shared().colorScheme.reset();
    return code;
}

} // namespace

int TalvenorApp::run(int argc, char **argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("talvenor"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Talvenor"));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.talvenor.Talvenor"));
    int code = 0;
    {
        const QtMessageHandler usual = qInstallMessageHandler(explainMissingDisplay);
        // The name alone: the program has no options, and Qt's own are none of its own.
        int nameOnly = argc > 0 ? 1 : 0;
        QApplication application(nameOnly, argv);
        qInstallMessageHandler(usual);
        code = runApplication(application);
    }
    // The end of the application object has told the pool to end. What is still at work there, and the
    // recognitions, end before the settings and texts that they use.
    generalPool().waitForDone();
    StorageService::shared().waitUntilSaved();
    Platform::shared().createSpeechRecognizer = nullptr;
    return code;
}

} // namespace talvenor
