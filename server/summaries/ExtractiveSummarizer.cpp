#include "server/summaries/ExtractiveSummarizer.h"

#include "server/summaries/CueFinder.h"
#include "server/summaries/NameFinder.h"
#include "server/summaries/TextRank.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>

namespace talvenor::server {

namespace {

constexpr std::size_t summarySentences = 3;
constexpr std::size_t keyPoints = 6;
constexpr std::size_t mostDecisions = 10;
constexpr std::size_t mostTasks = 15;
constexpr std::size_t shortestSentence = 4; ///< words; shorter ones say little out of their place
constexpr std::size_t longestQuote = 400;   ///< bytes of one sentence
constexpr int mostLooseWords = 3;
constexpr std::size_t tailWords =
    6; ///< a phrase that begins so near to the end of an open line goes on behind it

/// The fixed texts of a summary in one language.
struct Texts
{
    const char *participants;
    const char *summary;
    const char *keyPoints;
    const char *decisions;
    const char *tasks;
    const char *none;
    const char *speaker;
};

constexpr Texts english = {
    "## Participants",  "## Summary", "## Key Points", "## Decisions", "## Next Steps / Action Items",
    "None recognised.", "Speaker 1"};
constexpr Texts german = {"## Teilnehmer",
                          "## Zusammenfassung",
                          "## Wichtige Punkte",
                          "## Entscheidungen",
                          "## Nächste Schritte / Action Items",
                          "Keine erkannt.",
                          "Sprecher 1"};

using Indices = std::vector<std::size_t>;

/// True if two sentences share more than half of their words of meaning.
bool isAlike(const std::vector<std::string> &left, const std::vector<std::string> &right)
{
    std::vector<std::string> common;
    std::set_intersection(left.begin(), left.end(), right.begin(), right.end(), std::back_inserter(common));
    const std::size_t all = left.size() + right.size() - common.size();
    return all == 0 || common.size() * 2 > all;
}

/// True for words that lead on to others and end no sentence.
bool isLoose(const std::string &word)
{
    constexpr std::array<std::string_view, 26> loose = {
        "a",   "an",   "and",  "but", "or",  "so",  "the",  "then", "to",   "of",   "for", "with", "because",
        "und", "oder", "aber", "der", "die", "das", "dass", "ein",  "eine", "dann", "für", "mit",  "weil"};
    return std::find(loose.begin(), loose.end(), word) != loose.end();
}

bool isDay(const std::string &word)
{
    constexpr std::array<std::string_view, 14> days = {
        "monday", "tuesday",  "wednesday", "thursday",   "friday",  "saturday", "sunday",
        "montag", "dienstag", "mittwoch",  "donnerstag", "freitag", "samstag",  "sonntag"};
    return std::find(days.begin(), days.end(), word) != days.end();
}

/// Builds one summary.
class Composer
{
public:
    Composer(const std::string &text, Language language)
        : m_texts(language == Language::german ? german : english), m_transcript(parseTranscript(text)),
          m_names(namesIn(m_transcript)), m_scores(textRank(m_transcript.sentences)),
          m_order(m_transcript.sentences.size())
    {
        std::iota(m_order.begin(), m_order.end(), std::size_t{0});
        std::stable_sort(m_order.begin(), m_order.end(), [this](std::size_t left, std::size_t right) {
            return m_scores[left] > m_scores[right];
        });
        if (m_names.empty() && !m_transcript.sentences.empty())
            m_names.emplace_back(m_texts.speaker);
    }

    std::string compose()
    {
        const Indices summary = choose(summaryLength(), {});
        const Indices points = choose(keyPoints, summary);
        std::string result = section(m_texts.participants, m_names);
        result += std::string(m_texts.summary) + "\n" + paragraph(summary) + "\n\n";
        result += section(m_texts.keyPoints, quotes(points));
        result += section(m_texts.decisions, decisions());
        result += section(m_texts.tasks, tasks());
        result += "PARTICIPANTS:";
        for (std::size_t index = 0; index < m_names.size(); ++index)
            result += (index == 0 ? " " : ", ") + m_names[index];
        return result;
    }

private:
    [[nodiscard]] const Sentence &sentence(std::size_t index) const { return m_transcript.sentences[index]; }

    /// Sentences of the summary: less than three where the meeting has so few that no key point would be
    /// left.
    [[nodiscard]] std::size_t summaryLength() const
    {
        const auto whole = static_cast<std::size_t>(
            std::count_if(m_transcript.sentences.begin(), m_transcript.sentences.end(),
                          [](const Sentence &each) { return each.words.size() >= shortestSentence; }));
        return std::clamp<std::size_t>(whole / 2, 1, summarySentences);
    }

    /// The best sentences that are neither in `taken` nor like one of those chosen before, in the order of
    /// the meeting. Short ones come in only where there is nothing else at all.
    [[nodiscard]] Indices choose(std::size_t wanted, const Indices &taken) const
    {
        Indices chosen;
        std::vector<std::vector<std::string>> said;
        for (const std::size_t index : taken)
            said.push_back(contentWords(sentence(index)));
        for (const std::size_t index : m_order) {
            if (chosen.size() == wanted)
                break;
            if (sentence(index).words.size() < shortestSentence)
                continue;
            const auto words = contentWords(sentence(index));
            if (std::any_of(said.begin(), said.end(),
                            [&](const auto &other) { return isAlike(words, other); }))
                continue;
            said.push_back(words);
            chosen.push_back(index);
        }
        if (chosen.empty() && taken.empty() && !m_order.empty())
            chosen.push_back(m_order.front());
        std::sort(chosen.begin(), chosen.end());
        return chosen;
    }

    /// A sentence as it is shown. A recogniser that gives lower case only gets its capitals and full stop
    /// here.
    [[nodiscard]] std::string quote(std::size_t index, bool withNext = false) const
    {
        std::string text = sentence(index).text;
        if (withNext)
            text += " " + sentence(index + 1).text;
        const std::size_t begin = text.find_first_not_of("#>*+-=|~` ");
        text = begin == std::string::npos ? std::string() : text.substr(begin);
        if (text.size() > longestQuote) {
            std::size_t end = text.rfind(' ', longestQuote);
            if (end == std::string::npos || end == 0)
                end = longestQuote;
            while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
                --end; // not in the middle of a character
            return capitalised(text.substr(0, end)) + " …";
        }
        if (!m_transcript.isPunctuated)
            text = withoutLooseEnd(text);
        if (!m_transcript.isCased)
            text = withCapitals(text);
        text = upperFirst(text);
        if (!m_transcript.isPunctuated && text.find_last_of(".!?") != text.size() - 1)
            text += ".";
        return text;
    }

    /// `text` with its first letter in upper case. capitalised() would also treat what follows a hyphen.
    static std::string upperFirst(const std::string &text)
    {
        const std::size_t end = std::min(text.find_first_of(" -"), text.size());
        return capitalised(text.substr(0, end)) + text.substr(end);
    }

    /// A line that a recogniser has cut anywhere, without the words at its end that begin something new.
    static std::string withoutLooseEnd(const std::string &text)
    {
        std::string rest = text;
        for (int count = 0; count < mostLooseWords; ++count) {
            const std::size_t blank = rest.rfind(' ');
            if (blank == std::string::npos || !isLoose(lowerCase(std::string_view(rest).substr(blank + 1))))
                break;
            rest.resize(blank);
        }
        return rest;
    }

    /// A text in lower case with the capitals of the people in it, of the days and of the English "I".
    [[nodiscard]] std::string withCapitals(const std::string &text) const
    {
        std::string result;
        std::size_t begin = 0;
        while (begin <= text.size()) {
            const std::size_t end = std::min(text.find(' ', begin), text.size());
            const std::string word = text.substr(begin, end - begin);
            const bool isName = std::any_of(m_names.begin(), m_names.end(), [&word](const std::string &name) {
                return lowerCase(name) == word;
            });
            const bool isI = word == "i" || word.starts_with("i'");
            result += (begin == 0 ? "" : " ") + (isName || isI || isDay(word) ? capitalised(word) : word);
            begin = end + 1;
        }
        return result;
    }

    [[nodiscard]] std::string paragraph(const Indices &chosen) const
    {
        std::string text;
        for (const std::size_t index : chosen)
            text += (text.empty() ? "" : " ") + quote(index);
        if (text.empty())
            return m_texts.none;
        // A paragraph that began like this would be taken for the line of names.
        if (lowerCase(text).starts_with("participants:"))
            text = "\"" + text + "\"";
        return text;
    }

    [[nodiscard]] std::vector<std::string> quotes(const Indices &chosen) const
    {
        std::vector<std::string> texts;
        for (const std::size_t index : chosen)
            texts.push_back(quote(index));
        return texts;
    }

    /// True if what an open line says near its end goes on in the next line of the same speaker.
    template<typename Predicate>
    [[nodiscard]] bool runsOver(std::size_t index, Predicate holds) const
    {
        const Sentence &whole = sentence(index);
        if (!whole.continues || index + 1 >= m_transcript.sentences.size() ||
            sentence(index + 1).speaker != whole.speaker || whole.words.size() <= tailWords ||
            whole.words.back().lower == "approved")
            return false;
        Sentence head = whole;
        head.words.resize(whole.words.size() - tailWords);
        return !holds(head);
    }

    /// At most `wanted` of the sentences, the best ones, in the order of the meeting.
    [[nodiscard]] Indices best(Indices indices, std::size_t wanted) const
    {
        if (indices.size() > wanted) {
            std::stable_sort(indices.begin(), indices.end(), [this](std::size_t left, std::size_t right) {
                return m_scores[left] > m_scores[right];
            });
            indices.resize(wanted);
            std::sort(indices.begin(), indices.end());
        }
        return indices;
    }

    [[nodiscard]] std::vector<std::string> decisions() const
    {
        Indices found;
        for (std::size_t index = 0; index < m_transcript.sentences.size(); ++index) {
            if (isDecision(sentence(index)))
                found.push_back(index);
        }
        std::vector<std::string> texts;
        for (const std::size_t index : best(found, mostDecisions))
            texts.push_back(quote(index, runsOver(index, isDecision)));
        return texts;
    }

    [[nodiscard]] std::vector<std::string> tasks() const
    {
        const TaskFinder finder(m_names);
        const auto holdsTask = [&finder](const Sentence &each) { return finder.taskIn(each).has_value(); };
        Indices found;
        for (std::size_t index = 0; index < m_transcript.sentences.size(); ++index) {
            if (holdsTask(sentence(index)))
                found.push_back(index);
        }
        std::vector<std::string> texts;
        for (const std::size_t index : best(found, mostTasks)) {
            const std::string owner = finder.taskIn(sentence(index))->owner;
            texts.push_back((owner.empty() ? "" : owner + ": ") + quote(index, runsOver(index, holdsTask)));
        }
        return texts;
    }

    [[nodiscard]] std::string section(const char *heading, const std::vector<std::string> &items) const
    {
        std::string text = std::string(heading) + "\n";
        if (items.empty())
            text += std::string("- ") + m_texts.none + "\n";
        for (const std::string &item : items)
            text += "- " + item + "\n";
        return text + "\n";
    }

    const Texts &m_texts;
    const Transcript m_transcript;
    std::vector<std::string> m_names;
    const std::vector<double> m_scores;
    Indices m_order; ///< sentences by falling score
};

} // namespace

std::string ExtractiveSummarizer::summarize(const std::string &transcript, Language language)
{
    return Composer(transcript, language).compose();
}

} // namespace talvenor::server
