#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace talvenor {

/// The language of all text in the program.
enum class AppLanguage { german = 1, english };

/// All languages in the order in which they are offered.
[[nodiscard]] const QList<AppLanguage> &allAppLanguages();

/// The string that is stored, "de" or "en".
[[nodiscard]] QString stringForm(AppLanguage language);
/// The reverse; absent for any other string.
[[nodiscard]] std::optional<AppLanguage> appLanguageFromString(const QString &text);

/// The language's name in itself, "Deutsch" or "English".
[[nodiscard]] QString displayName(AppLanguage language);
/// The short mark of the language switcher, "DE" or "EN".
[[nodiscard]] QString flag(AppLanguage language);

} // namespace talvenor
