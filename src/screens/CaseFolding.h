#pragma once

#include <QString>

namespace talvenor {

/// `text` with its upper and lower case folded into one, for a containment test without regard to case. Any
/// thread.
///
/// This is Unicode's full case folding: "ß" becomes "ss", every sigma the same one. In a Turkic locale
/// (LC_ALL, LC_CTYPE, LANG) the dotted and the dotless i stay two letters. Nothing else is normalised: a
/// letter with its accent in one character differs from the one in two, and spaces count. Every character is
/// folded by itself, so that a text which contains another one contains it when both are folded, too.
[[nodiscard]] QString foldCase(const QString &text);

} // namespace talvenor
