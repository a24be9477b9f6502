#pragma once

#include <string_view>

namespace talvenor::server {

/// All lists hold words in lower case, of English and German together: a meeting may mix them.

/// True for words that say nothing of a topic: articles, pronouns, auxiliaries, particles, numbers.
[[nodiscard]] bool isStopWord(std::string_view word);

/// True for a given name that is common where English or German is spoken.
[[nodiscard]] bool isGivenName(std::string_view word);

/// True for words that follow "I am", "this is" or "thanks" often and are no name, capitalised or not.
[[nodiscard]] bool isNeverName(std::string_view word);

} // namespace talvenor::server
