#pragma once

#include "settings/AppLanguage.h"
#include "settings/L10nTable.h"

#include <QString>

namespace talvenor {

/// The texts that the program shares, in the language of the application.
///
/// Every access reads the setting anew, so a change of the language takes effect at the next reading. Texts
/// that only one place needs stand at that place as a pair chosen by `isGerman`. Any thread.
namespace L10n {

/// The language that is set.
[[nodiscard]] AppLanguage current();

/// True if the language that is set is German. All decisions about language go through it.
[[nodiscard]] bool isGerman();

#define TALVENOR_DECLARE_TEXT(name, english, german) [[nodiscard]] QString name();
TALVENOR_L10N_TABLE(TALVENOR_DECLARE_TEXT)
#undef TALVENOR_DECLARE_TEXT

/// Says where to click for a transcript, with the current text of that button in quotes.
[[nodiscard]] QString noTranscriptHint();
/// Says where to click for a summary, with the current text of that button in quotes.
[[nodiscard]] QString noSummaryHint();

/// The title of a recording made at the moment that `date` tells; the same in both languages.
[[nodiscard]] QString meetingTitle(const QString &date);

} // namespace L10n

} // namespace talvenor
