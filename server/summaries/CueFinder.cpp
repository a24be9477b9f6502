#include "server/summaries/CueFinder.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace talvenor::server {

namespace {

/// Phrases as phraseLine() would hold them.
constexpr std::array<std::string_view, 44> decisions = {" we decided ",          " we have decided ",
                                                        " we've decided ",       " have decided to ",
                                                        " decided to ",          " it is decided ",
                                                        " it was decided ",      " the decision is ",
                                                        " decision is to ",      " we agree ",
                                                        " we agreed ",           " we all agree ",
                                                        " we have agreed ",      " we've agreed ",
                                                        " agreed to ",           " agreed that ",
                                                        " agreed on ",           " settled on ",
                                                        " we settle on ",        " let's go with ",
                                                        " we go with ",          " we'll go with ",
                                                        " we will go with ",     " is approved ",
                                                        " we approve ",          " wir haben beschlossen ",
                                                        " wir beschließen ",     " wurde beschlossen ",
                                                        " ist beschlossen ",     " haben entschieden ",
                                                        " wir entscheiden uns ", " haben uns entschieden ",
                                                        " wurde entschieden ",   " die entscheidung ist ",
                                                        " ist entschieden ",     " wir einigen uns ",
                                                        " haben uns geeinigt ",  " haben vereinbart ",
                                                        " wir vereinbaren ",     " wurde vereinbart ",
                                                        " wir sind uns einig ",  " wir legen fest ",
                                                        " haben festgelegt ",    " es bleibt dabei "};

/// What the speaker takes on.
constexpr std::array<std::string_view, 18> ownTasks = {
    " i will ",      " i'll ",          " i am going to ", " i'm going to ",     " i can take care ",
    " i take care ", " i need to ",     " ich werde ",     " ich kümmere mich ", " ich übernehme ",
    " ich schicke ", " ich mache das ", " ich erledige ",  " ich bereite ",      " ich muss noch ",
    " ich prüfe ",   " ich kläre ",     " ich schreibe "};

/// What somebody takes on who is named right before.
constexpr std::array<std::string_view, 18> namedTasks = {
    " will ",       " is going to ",    " needs to ",   " has to ",   " should ",   " must ",
    " takes care ", " is responsible ", " to prepare ", " wird ",     " soll ",     " muss ",
    " übernimmt ",  " kümmert sich ",   " schickt ",    " erledigt ", " bereitet ", " ist verantwortlich "};

/// What anybody has to do.
constexpr std::array<std::string_view, 74> openTasks = {" we will ",
                                                        " we'll ",
                                                        " you will ",
                                                        " he will ",
                                                        " she will ",
                                                        " they will ",
                                                        " we need to ",
                                                        " you need to ",
                                                        " we have to ",
                                                        " you have to ",
                                                        " needs to be ",
                                                        " has to be ",
                                                        " action item ",
                                                        " action items ",
                                                        " next step ",
                                                        " next steps ",
                                                        " to do ",
                                                        " todo ",
                                                        " take care of ",
                                                        " follow up ",
                                                        " please send ",
                                                        " please prepare ",
                                                        " please check ",
                                                        " could you please ",
                                                        " can you please ",
                                                        " is responsible for ",
                                                        " by monday ",
                                                        " by tuesday ",
                                                        " by wednesday ",
                                                        " by thursday ",
                                                        " by friday ",
                                                        " by saturday ",
                                                        " by sunday ",
                                                        " by tomorrow ",
                                                        " by next week ",
                                                        " by the end of ",
                                                        " by next month ",
                                                        " until friday ",
                                                        " before friday ",
                                                        " deadline is ",
                                                        " wir werden ",
                                                        " wir müssen ",
                                                        " du musst ",
                                                        " ihr müsst ",
                                                        " sie müssen ",
                                                        " muss noch ",
                                                        " müssen noch ",
                                                        " aufgabe ist ",
                                                        " nächster schritt ",
                                                        " nächste schritte ",
                                                        " nächsten schritte ",
                                                        " kümmert sich ",
                                                        " übernimmt ",
                                                        " ist verantwortlich für ",
                                                        " bis montag ",
                                                        " bis dienstag ",
                                                        " bis mittwoch ",
                                                        " bis donnerstag ",
                                                        " bis freitag ",
                                                        " bis samstag ",
                                                        " bis sonntag ",
                                                        " bis morgen ",
                                                        " bis nächste woche ",
                                                        " bis ende ",
                                                        " bis zum ",
                                                        " bis nächsten ",
                                                        " bitte schick ",
                                                        " bitte schicke ",
                                                        " bitte prüfe ",
                                                        " kannst du bitte ",
                                                        " könntest du bitte ",
                                                        " zu erledigen ",
                                                        " wird erledigt ",
                                                        " frist ist "};

template<typename Phrases>
std::size_t firstOf(const Phrases &phrases, const std::string &line)
{
    std::size_t first = std::string::npos;
    for (const std::string_view phrase : phrases)
        first = std::min(first, line.find(phrase));
    return first;
}

/// The person of `names` who stands right before a phrase of what somebody takes on.
std::string namedOwner(const std::string &line, const std::vector<std::string> &names)
{
    std::string owner;
    std::size_t first = std::string::npos;
    for (const std::string &name : names) {
        std::string known = phraseLine(wordsOf(name));
        // People are called by their given name, too.
        const std::string given = known.substr(0, known.find(' ', 1) + 1);
        for (const std::string &form : {known, given}) {
            for (std::size_t at = line.find(form); at != std::string::npos; at = line.find(form, at + 1)) {
                const std::string_view rest = std::string_view(line).substr(at + form.size() - 1);
                const bool acts =
                    std::any_of(namedTasks.begin(), namedTasks.end(),
                                [rest](std::string_view phrase) { return rest.starts_with(phrase); });
                if (acts && at < first) {
                    first = at;
                    owner = name;
                }
            }
        }
    }
    return owner;
}

} // namespace

bool isDecision(const Sentence &sentence)
{
    return firstOf(decisions, phraseLine(sentence.words)) != std::string::npos;
}

std::optional<Task> taskIn(const Sentence &sentence, const std::vector<std::string> &names)
{
    const std::string line = phraseLine(sentence.words);
    const std::string owner = namedOwner(line, names);
    if (!owner.empty())
        return Task{owner};
    if (firstOf(ownTasks, line) != std::string::npos) {
        const std::string speaker = lowerCase(sentence.speaker);
        // A label may be the given name of somebody whose full name came up.
        const auto self = std::find_if(names.begin(), names.end(), [&speaker](const std::string &name) {
            const std::string lower = lowerCase(name);
            return !speaker.empty() && (lower == speaker || lower.starts_with(speaker + " "));
        });
        return Task{self == names.end() ? std::string() : *self};
    }
    if (firstOf(openTasks, line) != std::string::npos)
        return Task{};
    return std::nullopt;
}

} // namespace talvenor::server
