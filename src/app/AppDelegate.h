#pragma once

#include <QObject>

namespace talvenor {

/// What happens when the program has come up and when it goes. Main thread.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Makes the folders that the settings name, gives the application its icon, and starts to ask whether
    /// system audio can be had. Never fails.
    void applicationDidFinishLaunching();

    /// Closing the window ends the program.
    [[nodiscard]] bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }

    /// Does nothing: a recording that runs is left as it stands.
    void applicationWillTerminate() {}
};

} // namespace talvenor
