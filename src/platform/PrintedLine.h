#pragma once

#include <QString>

namespace talvenor {

/// Prints `text` and a line feed to standard output and flushes it, so that the line is there for whoever
/// reads along, and also if the process is ended right afterwards. Any thread; lines do not mix.
void printLine(const QString &text);

} // namespace talvenor
