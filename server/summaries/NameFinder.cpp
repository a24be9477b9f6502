#include "server/summaries/NameFinder.h"

#include "server/summaries/WordLists.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace talvenor::server {

namespace {

constexpr std::size_t mostNames = 50;
constexpr std::size_t longestName = 60; ///< bytes

/// What a pattern says of the word behind it: a name for certain, what the speaker is, who or what is here,
/// or somebody addressed.
enum class Trust { introduction, being, presence, thanks };

struct Pattern
{
    std::array<std::string_view, 3> words; ///< empty ones are not looked at
    Trust trust;
};

/// Longer patterns before shorter ones that end alike.
constexpr std::array patterns = {
    Pattern{{"my", "name", "is"}, Trust::introduction},
    Pattern{{"my", "name's"}, Trust::introduction},
    Pattern{{"i", "am", "called"}, Trust::introduction},
    Pattern{{"i'm", "called"}, Trust::introduction},
    Pattern{{"mein", "name", "ist"}, Trust::introduction},
    Pattern{{"ich", "heiße"}, Trust::introduction},
    Pattern{{"ich", "heisse"}, Trust::introduction},
    Pattern{{"i", "am"}, Trust::being},
    Pattern{{"i'm"}, Trust::being},
    Pattern{{"this", "is"}, Trust::presence},
    Pattern{{"ich", "bin", "die"}, Trust::being},
    Pattern{{"ich", "bin", "der"}, Trust::being},
    Pattern{{"ich", "bin"}, Trust::being},
    Pattern{{"hier", "ist"}, Trust::presence},
    Pattern{{"hier", "spricht"}, Trust::presence},
    Pattern{{"thank", "you"}, Trust::thanks},
    Pattern{{"thanks"}, Trust::thanks},
    Pattern{{"vielen", "dank"}, Trust::thanks},
    Pattern{{"danke"}, Trust::thanks},
};

/// The words of one speaker without the bounds of lines: a recogniser breaks them anywhere.
struct Stretch
{
    std::vector<const Word *> words;
    std::vector<bool> startsSentence; ///< beside `words`
};

std::vector<Stretch> stretchesOf(const Transcript &transcript)
{
    std::vector<Stretch> stretches;
    const std::string *speaker = nullptr;
    bool continues = false;
    for (const Sentence &sentence : transcript.sentences) {
        if (speaker == nullptr || *speaker != sentence.speaker)
            stretches.emplace_back();
        speaker = &sentence.speaker;
        for (std::size_t index = 0; index < sentence.words.size(); ++index) {
            stretches.back().words.push_back(&sentence.words[index]);
            stretches.back().startsSentence.push_back(index == 0 && !continues);
        }
        continues = sentence.continues;
    }
    return stretches;
}

/// The number of words if the pattern stands at `position`, else 0.
std::size_t lengthAt(const Pattern &pattern, const Stretch &stretch, std::size_t position)
{
    std::size_t length = 0;
    for (const std::string_view word : pattern.words) {
        if (word.empty())
            break;
        const std::size_t index = position + length;
        if (index >= stretch.words.size() || stretch.words[index]->lower != word)
            return 0;
        if (length > 0 && (stretch.startsSentence[index] || stretch.words[index]->afterPunctuation))
            return 0;
        ++length;
    }
    return length;
}

/// True if what follows a word says that it was the name of the one who speaks.
bool introducesItself(const Stretch &stretch, std::size_t index, Trust trust)
{
    // "I am calling from", "ich bin pünktlich aus"
    constexpr std::array<std::string_view, 6> endings = {"ing", "ed", "ly", "lich", "isch", "ig"};
    const std::string &word = stretch.words[index]->lower;
    if (std::any_of(endings.begin(), endings.end(),
                    [&](std::string_view ending) { return word.ends_with(ending); }))
        return false;
    const auto isNext = [&](std::size_t ahead, std::string_view text) {
        const std::size_t at = index + ahead;
        return at < stretch.words.size() && !stretch.startsSentence[at] && stretch.words[at]->lower == text;
    };
    if (isNext(1, "speaking") || isNext(1, "here") || (isNext(1, "am") && isNext(2, "apparat")))
        return trust != Trust::thanks;
    constexpr std::array<std::string_view, 4> origins = {"from", "vom", "von", "aus"};
    return trust == Trust::being && std::any_of(origins.begin(), origins.end(),
                                                [&](std::string_view origin) { return isNext(1, origin); });
}

bool isFamilyName(const Transcript &transcript, const Stretch &stretch, std::size_t index)
{
    if (!transcript.isCased || index >= stretch.words.size() || stretch.startsSentence[index])
        return false;
    const Word &word = *stretch.words[index];
    return !word.afterPunctuation && isCapitalised(word.text) && word.lower.size() > 1 &&
           !isStopWord(word.lower) && !isNeverName(word.lower);
}

bool isName(const Transcript &transcript, const Stretch &stretch, std::size_t index, Trust trust)
{
    const Word &word = *stretch.words[index];
    if (word.lower.size() < 2 || word.lower.size() > longestName ||
        word.lower.find_first_of("0123456789") != std::string::npos)
        return false;
    if (isGivenName(word.lower))
        return true;
    if (isStopWord(word.lower))
        return false;
    if (trust == Trust::introduction)
        return true;
    if (isNeverName(word.lower))
        return false;
    if (transcript.isCased && !isCapitalised(word.text))
        return false;
    if (transcript.isCased)
        return true;
    return introducesItself(stretch, index, trust);
}

/// The name that stands from `index` on, if one does.
std::optional<std::string> nameAt(const Transcript &transcript, const Stretch &stretch, std::size_t index,
                                  Trust trust)
{
    if (index >= stretch.words.size())
        return std::nullopt;
    const Word &word = *stretch.words[index];
    // "I am. Bob, could you" names nobody; "Thanks, Bob" does.
    if (stretch.startsSentence[index] || (word.afterPunctuation && trust != Trust::thanks))
        return std::nullopt;
    if (!isName(transcript, stretch, index, trust))
        return std::nullopt;
    std::string name = capitalised(word.text);
    if (isFamilyName(transcript, stretch, index + 1))
        name += " " + stretch.words[index + 1]->text;
    return name;
}

/// The label without what would break the line of names.
std::string cleanLabel(const std::string &label)
{
    std::string name = label;
    std::replace(name.begin(), name.end(), ',', ' ');
    name = simplified(name);
    if (name.size() <= longestName)
        return name;
    std::size_t end = longestName;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U)
        --end; // not in the middle of a character
    return name.substr(0, end);
}

/// The names found so far.
class Names
{
public:
    void add(const std::string &name)
    {
        const std::string lower = lowerCase(name);
        for (std::string &known : m_names) {
            const std::string lowerKnown = lowerCase(known);
            if (lowerKnown == lower || lowerKnown.starts_with(lower + " "))
                return;
            if (lower.starts_with(lowerKnown + " ")) {
                known = name; // "Anna" was the beginning of "Anna Weber".
                return;
            }
        }
        if (!name.empty() && m_names.size() < mostNames)
            m_names.push_back(name);
    }

    [[nodiscard]] std::vector<std::string> take() { return std::move(m_names); }

private:
    std::vector<std::string> m_names;
};

} // namespace

std::vector<std::string> namesIn(const Transcript &transcript)
{
    Names names;
    const std::string *speaker = nullptr;
    for (const Sentence &sentence : transcript.sentences) {
        if (!sentence.speaker.empty() && (speaker == nullptr || *speaker != sentence.speaker))
            names.add(cleanLabel(sentence.speaker));
        speaker = &sentence.speaker;
    }
    for (const Stretch &stretch : stretchesOf(transcript)) {
        for (std::size_t position = 0; position < stretch.words.size(); ++position) {
            for (const Pattern &pattern : patterns) {
                const std::size_t length = lengthAt(pattern, stretch, position);
                if (length == 0)
                    continue;
                if (const auto name = nameAt(transcript, stretch, position + length, pattern.trust)) {
                    names.add(*name);
                    break;
                }
            }
        }
    }
    return names.take();
}

} // namespace talvenor::server
