#include "platform/linux/media/LibavError.h"

#include "foundation/LocalizedError.h"

extern "C" {
#include <libavutil/error.h>
}

#include <array>

namespace talvenor {

QString libavErrorText(int code)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    // A code that libav does not know still gets a text with its number.
    static_cast<void>(av_strerror(code, text.data(), text.size()));
    return QString::fromUtf8(text.data());
}

void throwLibavError(int code, const QString &what)
{
    throw PlatformError(QStringLiteral("libav"), code, what + QStringLiteral(": ") + libavErrorText(code));
}

int libavCheck(int result, const QString &what)
{
    if (result < 0)
        throwLibavError(result, what);
    return result;
}

} // namespace talvenor
