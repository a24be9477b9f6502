#pragma once

#include <QString>

#include <cstdint>

namespace talvenor {

/// Folds upper and lower case into one, for a containment test without regard to case. A value; any thread.
///
/// This is Unicode's full case folding: "ß" becomes "ss", every sigma the same one. In a Turkic locale the
/// dotted and the dotless i stay two letters. Nothing else is normalised: a letter with its accent in one
/// character differs from the one in two, and spaces count. Every character is folded by itself, so that a
/// text which contains another one contains it when both are folded, too.
class CaseFolding
{
public:
    /// For the locale that the environment names for characters now (LC_ALL, LC_CTYPE, LANG).
    CaseFolding();

    [[nodiscard]] QString folded(const QString &text) const;

private:
    std::uint32_t m_options;
};

} // namespace talvenor
