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

/// Finds the tasks that a meeting gives its people.
class TaskFinder
{
public:
    /// `names` are the meeting's people.
    explicit TaskFinder(const std::vector<std::string> &names);

    /// The task in a sentence, if it holds one: "I will", "NAME needs to", "by Friday", "ich kümmere mich",
    /// "bis Freitag" and the like.
    [[nodiscard]] std::optional<Task> taskIn(const Sentence &sentence) const;

private:
    struct Person
    {
        std::string name;
        std::string lower;              ///< the name in lower case
        std::vector<std::string> forms; ///< the whole and the given name, as phraseLine() would hold them
    };

    [[nodiscard]] std::string ownerIn(const std::string &line) const;

    std::vector<Person> m_people;
};

} // namespace talvenor::server
