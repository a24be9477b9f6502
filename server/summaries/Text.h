#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace talvenor::server {

/// One word of a text.
struct Word
{
    std::string text;  ///< as it stands there
    std::string lower; ///< in lower case
    /// What stands between the word before and this one holds something else than blanks.
    bool afterPunctuation = false;
};

/// A UTF-8 text in lower case, by the simple mapping of Unicode for the letters of Latin, Greek and Cyrillic;
/// the system's locale does not matter.
[[nodiscard]] std::string lowerCase(std::string_view text);

/// `word` with its first letter in upper case, and the letter after each hyphen in it.
[[nodiscard]] std::string capitalised(std::string_view word);

/// True if the first letter of `word` is an upper-case one.
[[nodiscard]] bool isCapitalised(std::string_view word);

/// The words of a text: letters and digits, with single hyphens and apostrophes between them. Scripts without
/// spaces give one word for each stretch. Bytes that are not UTF-8 count as blanks.
[[nodiscard]] std::vector<Word> wordsOf(std::string_view text);

/// The words in lower case with one blank before, between and after them, for a search of phrases: a phrase
/// in blanks is found only at whole words.
[[nodiscard]] std::string phraseLine(const std::vector<Word> &words);

/// A text on one line: control characters and stretches of blanks become one blank, none at its ends.
[[nodiscard]] std::string simplified(std::string_view text);

} // namespace talvenor::server
