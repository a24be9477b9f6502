#pragma once

namespace talvenor {

/// The program: sets everything up, shows the window, and returns when it has been closed.
///
/// The result is the exit code: 0, or 1 where there is no display or the window could not be made, which is
/// then told on standard error. Once in a process, on the main thread.
class TalvenorApp
{
public:
    [[nodiscard]] static int run(int argc, char **argv);
};

} // namespace talvenor
