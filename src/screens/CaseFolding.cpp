#include "screens/CaseFolding.h"

#include "foundation/ProgrammingError.h"

#include <QByteArrayList>

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

CaseFolding::CaseFolding() : m_options(isLocaleTurkic() ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT)
{
}

QString CaseFolding::folded(const QString &text) const
{
    const auto *const source = reinterpret_cast<const UChar *>(text.utf16());
    const auto length = static_cast<int32_t>(text.size());
    // Most texts keep their length; the call tells what the others need.
    QString result(text.size(), Qt::Uninitialized);
    for (;;) {
        UErrorCode status = U_ZERO_ERROR;
        const int32_t needed =
            u_strFoldCase(reinterpret_cast<UChar *>(result.data()), static_cast<int32_t>(result.size()),
                          source, length, m_options, &status);
        const bool isTooShort = status == U_BUFFER_OVERFLOW_ERROR;
        if (U_FAILURE(status) && !isTooShort)
            programmingError(QStringLiteral("ICU cannot fold the case of a text: ") +
                             QString::fromLatin1(u_errorName(status)));
        result.resize(needed);
        if (!isTooShort)
            return result;
    }
}

} // namespace talvenor
