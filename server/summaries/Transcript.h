#pragma once

#include "server/summaries/Text.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace talvenor::server {

/// One sentence of a meeting, or what stands for one where the recogniser gives no punctuation.
struct Sentence
{
    std::string speaker; ///< label; empty if unknown
    std::string text;    ///< on one line, not empty
    std::vector<Word> words;
    bool continues = false; ///< ends in the middle: the next one of the same speaker may belong to it
};

/// A meeting's transcript, taken apart.
struct Transcript
{
    std::vector<Sentence> sentences;
    bool isPunctuated = false; ///< full stops mark the ends of sentences
    bool isCased = false;      ///< capital letters mean something
};

/// Reads lines "[mm:ss] text" or "[mm:ss] [speaker] text"; lines without the brackets are text. Where the
/// text is punctuated, lines of one speaker are joined and split into sentences; where it is not, each line
/// is taken for a sentence, and overlong ones are cut.
[[nodiscard]] Transcript parseTranscript(std::string_view text);

} // namespace talvenor::server
