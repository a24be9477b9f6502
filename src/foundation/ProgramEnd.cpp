#include "foundation/ProgramEnd.h"

#include "foundation/Task.h"

#include <QCoreApplication>

#include <atomic>

namespace talvenor {

namespace {

// Trivially destroyed, because threads of the pool still read it while static objects are destroyed.
constinit std::atomic<bool> isEnding = false;

/// Notices the end by both of its ways: the application object is destroyed, or `exit` is called under it.
class EndWatch
{
public:
    EndWatch()
    {
        qAddPostRoutine([] { isEnding = true; });
    }
    ~EndWatch() { isEnding = true; }
    Q_DISABLE_COPY_MOVE(EndWatch)
};

} // namespace

void watchForProgramEnd()
{
    (void)generalPool(); // made before the watch, so destroyed after it
    static const EndWatch watch;
}

bool isProgramEnding()
{
    return isEnding;
}

} // namespace talvenor
