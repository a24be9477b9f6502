#pragma once

#include "server/summaries/Transcript.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace talvenor::server {

/// True if a sentence tells of a decision: "we decided", "agreed to", "wir haben beschlossen" and the like.
[[nodiscard]] bool isDecision(const Sentence &sentence);

/// A task that a sentence gives somebody.
struct Task
{
    std::string owner; ///< one of the names; empty if the sentence does not tell
};

/// The task in a sentence, if it holds one: "I will", "NAME needs to", "by Friday", "ich kümmere mich",
/// "bis Freitag" and the like. `names` are the meeting's people.
[[nodiscard]] std::optional<Task> taskIn(const Sentence &sentence, const std::vector<std::string> &names);

} // namespace talvenor::server
