#pragma once

#include "server/summaries/Transcript.h"

#include <cstddef>
#include <vector>

namespace talvenor::server {

/// How much each sentence says of the whole, by TextRank: Mihalcea and Tarau, "TextRank: Bringing Order into
/// Texts", Proceedings of EMNLP 2004, section 4. Sentences are the nodes of a graph, the edge between two of
/// them weighs the words they share over the sum of the logarithms of their lengths, and the weighted
/// PageRank (damping 0.85) of a node is its score. Words of no meaning are left out.
///
/// The graph grows with the square of the sentences, so long transcripts are ranked in blocks first and their
/// best sentences together again, as often as it takes; a sentence that loses in its block scores 0. The
/// blocks shrink where there are very many, which bounds the time for any text. The same input gives the same
/// scores.
[[nodiscard]] std::vector<double> textRank(const std::vector<Sentence> &sentences);

/// The words of a sentence that carry meaning, in lower case, sorted, each once.
[[nodiscard]] std::vector<std::string> contentWords(const Sentence &sentence);

} // namespace talvenor::server
