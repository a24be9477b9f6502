#pragma once

#include <string>
#include <vector>

namespace talvenor::server {

/// Runs the program with the arguments after its name and gives its exit code: 0, 1 for what went wrong,
/// 2 for a command line that is not understood. Reads and writes the standard streams.
int runCommandLine(const std::vector<std::string> &arguments);

} // namespace talvenor::server
