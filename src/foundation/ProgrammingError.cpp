#include "foundation/ProgrammingError.h"

#include <QDebug>

#include <cstdlib>

namespace talvenor {

void programmingError(const QString &what, std::source_location where)
{
    // qFatal would do, but it can be turned into a dialog or be swallowed by a message handler.
    qCritical("Programming error at %s:%u (%s): %s", where.file_name(), where.line(), where.function_name(),
              qUtf8Printable(what));
    std::abort();
}

} // namespace talvenor
