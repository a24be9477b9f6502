#pragma once

#include "settings/AppLanguage.h"
#include "store/Recording.h"

#include <QString>

namespace talvenor {

/// A recording as a Markdown document with its words in `language`: title, date, duration, participants if
/// there are any, transcript, and the summary if there is one.
///
/// Nothing is escaped, and the text ends with the last character of the transcript or the summary.
[[nodiscard]] QString markdownDocument(const Recording &recording, AppLanguage language);

} // namespace talvenor
