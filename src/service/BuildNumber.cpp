#include "service/BuildNumber.h"

namespace talvenor {

qint64 buildNumberFromText(const std::optional<QString> &text)
{
    // QString would take blanks around the digits as well.
    if (!text || text->trimmed() != *text)
        return 1;
    bool isNumber = false;
    const qint64 number = text->toLongLong(&isNumber, 10);
    return isNumber ? number : 1;
}

qint64 ownBuildNumber()
{
    return buildNumberFromText(QStringLiteral(TALVENOR_BUILD_NUMBER));
}

} // namespace talvenor
