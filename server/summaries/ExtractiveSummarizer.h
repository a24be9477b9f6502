#pragma once

#include "server/summaries/Summarizer.h"

namespace talvenor::server {

/// Summaries without a language model: the transcript's own sentences, chosen by TextRank (see TextRank.h)
/// for the summary and the key points and by phrases for decisions and tasks (see CueFinder.h); people by
/// simple rules (see NameFinder.h). The same input gives the same summary.
class ExtractiveSummarizer : public Summarizer
{
public:
    [[nodiscard]] std::string summarize(const std::string &transcript, Language language) override;
};

} // namespace talvenor::server
