#include "platform/PrintedLine.h"

#include <cstdio>

namespace talvenor {

void printLine(const QString &text)
{
    const QByteArray line = text.toUtf8() + '\n';
    // There is nowhere to tell that standard output is closed.
    static_cast<void>(std::fwrite(line.constData(), 1, std::size_t(line.size()), stdout));
    static_cast<void>(std::fflush(stdout));
}

} // namespace talvenor
