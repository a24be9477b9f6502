#pragma once

#include "server/common/Language.h"

#include <string>

namespace talvenor::server {

/// Makes the summary of a meeting out of its transcript.
class Summarizer
{
public:
    virtual ~Summarizer() = default;

    /// Markdown in `language` with five sections (participants, summary, key points, decisions, next steps),
    /// then as its last line "PARTICIPANTS: " and the names, separated by ", ". The transcript is UTF-8, in
    /// lines "[mm:ss] text" or "[mm:ss] [speaker] text"; any other text is taken too. Blocks; callable from
    /// any thread, several at once.
    [[nodiscard]] virtual std::string summarize(const std::string &transcript, Language language) = 0;
};

} // namespace talvenor::server
