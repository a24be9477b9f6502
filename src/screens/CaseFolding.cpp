#include "screens/CaseFolding.h"

#include "foundation/ProgrammingError.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>

namespace talvenor {

namespace {

/// Whether the locale that the environment names for characters has an upper case of "i" that keeps its dot.
bool isLocaleTurkic()
{
    for (const char *variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const QByteArray name = qgetenv(variable);
        if (name.isEmpty())
            continue;
        const QByteArray language = name.split('.').first().split('@').first().split('_').first();
        return language == "tr" || language == "az";
    }
    return false;
}

} // namespace

QString foldCase(const QString &text)
{
    const auto *const source = reinterpret_cast<const UChar *>(text.utf16());
    const auto length = static_cast<int32_t>(text.size());
    const uint32_t options = isLocaleTurkic() ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
    // Most texts keep their length; the call tells what the others need.
    QString folded(text.size(), Qt::Uninitialized);
    for (;;) {
        UErrorCode status = U_ZERO_ERROR;
        const int32_t needed =
            u_strFoldCase(reinterpret_cast<UChar *>(folded.data()), static_cast<int32_t>(folded.size()),
                          source, length, options, &status);
        const bool isTooShort = status == U_BUFFER_OVERFLOW_ERROR;
        if (U_FAILURE(status) && !isTooShort)
            programmingError(QStringLiteral("ICU cannot fold the case of a text: ") +
                             QString::fromLatin1(u_errorName(status)));
        folded.resize(needed);
        if (!isTooShort)
            return folded;
    }
}

} // namespace talvenor
