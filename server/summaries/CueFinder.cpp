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

/// True if a phrase of what somebody takes on begins here.
bool acts(std::string_view rest)
{
    return std::any_of(namedTasks.begin(), namedTasks.end(),
                       [rest](std::string_view phrase) { return rest.starts_with(phrase); });
}

} // namespace

bool isDecision(const Sentence &sentence)
{
    return firstOf(decisions, phraseLine(sentence.words)) != std::string::npos;
}

TaskFinder::TaskFinder(const std::vector<std::string> &names)
{
    for (const std::string &name : names) {
        Person person;
        person.name = name;
        person.lower = lowerCase(name);
        const std::string whole = phraseLine(wordsOf(name));
        if (whole.size() > 1) {
            person.forms.push_back(whole);
            // People are called by their given name, too.
            const std::string given = whole.substr(0, whole.find(' ', 1) + 1);
            if (given != whole)
                person.forms.push_back(given);
        }
        m_people.push_back(std::move(person));
    }
}

std::optional<Task> TaskFinder::taskIn(const Sentence &sentence) const
{
    const std::string line = phraseLine(sentence.words);
    const std::string owner = ownerIn(line);
    if (!owner.empty())
        return Task{owner};
    if (firstOf(ownTasks, line) != std::string::npos) {
        const std::string speaker = lowerCase(sentence.speaker);
        // A label may be the given name of somebody whose full name came up.
        const auto self = std::find_if(m_people.begin(), m_people.end(), [&speaker](const Person &person) {
            return !speaker.empty() && (person.lower == speaker || person.lower.starts_with(speaker + " "));
        });
        return Task{self == m_people.end() ? std::string() : self->name};
    }
    if (firstOf(openTasks, line) != std::string::npos)
        return Task{};
    return std::nullopt;
}

/// The first person who stands right before a phrase of what somebody takes on.
std::string TaskFinder::ownerIn(const std::string &line) const
{
    std::string owner;
    std::size_t first = std::string::npos;
    for (const Person &person : m_people) {
        for (const std::string &form : person.forms) {
            for (std::size_t at = line.find(form); at < first; at = line.find(form, at + 1)) {
                if (acts(std::string_view(line).substr(at + form.size() - 1))) {
                    first = at;
                    owner = person.name;
                }
            }
        }
    }
    return owner;
}

} // namespace talvenor::server
