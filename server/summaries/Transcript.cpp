#include "server/summaries/Transcript.h"

#include <algorithm>
#include <array>

namespace talvenor::server {

namespace {

/// Words after which a stretch without a full stop is cut, and the length of the pieces.
constexpr std::size_t longestSentence = 60;
constexpr std::size_t pieceLength = 25;
/// A text counts as punctuated if it has a full stop for so many words at least.
constexpr std::size_t wordsPerStop = 50;

struct Line
{
    std::string speaker;
    std::string text;
};

bool isTime(std::string_view text)
{
    return text.find(':') != std::string_view::npos && text.front() != ':' &&
           text.find_first_not_of("0123456789:.") == std::string_view::npos;
}

/// Takes a group in brackets off the front of `text`; false if there is none.
bool takeBrackets(std::string_view &text, std::string_view &group)
{
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string_view::npos || text[begin] != '[')
        return false;
    const std::size_t end = text.find(']', begin);
    if (end == std::string_view::npos)
        return false;
    group = text.substr(begin + 1, end - begin - 1);
    text.remove_prefix(end + 1);
    return true;
}

Line parsedLine(std::string_view text)
{
    Line line;
    std::string_view rest = text;
    std::string_view group;
    if (takeBrackets(rest, group) && !group.empty() && isTime(group)) {
        text = rest;
        if (takeBrackets(rest, group) && !simplified(group).empty()) {
            line.speaker = simplified(group);
            text = rest;
        }
    }
    line.text = simplified(text);
    return line;
}

bool isStop(char character)
{
    return character == '.' || character == '!' || character == '?';
}

/// True if the full stop at `position` ends a sentence: a blank or the end follows, and what precedes is no
/// single letter, number or common abbreviation.
bool endsSentence(std::string_view text, std::size_t position)
{
    if (!isStop(text[position]) || (position + 1 < text.size() && text[position + 1] != ' '))
        return false;
    if (text[position] != '.')
        return true;
    const std::size_t blank = text.rfind(' ', position);
    const std::size_t begin = blank == std::string_view::npos ? 0 : blank + 1;
    const std::string word = lowerCase(text.substr(begin, position - begin));
    static constexpr std::array<std::string_view, 16> abbreviations = {
        "dr",  "mr",  "mrs", "ms", "prof", "st",  "vs",  "e.g",
        "i.e", "z.b", "bzw", "ca", "nr",   "d.h", "u.a", "usw"};
    if (std::find(abbreviations.begin(), abbreviations.end(), word) != abbreviations.end())
        return false;
    const bool isNumber = !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
    // "am 3. Mai": only before a blank; at the end of a line it may well be an end.
    return word.size() > 1 ? !(isNumber && word.size() <= 2 && position + 1 < text.size())
                           : position + 1 >= text.size();
}

std::size_t countWords(std::string_view text)
{
    return text.empty() ? 0 : static_cast<std::size_t>(std::count(text.begin(), text.end(), ' ')) + 1;
}

void add(Transcript &transcript, const std::string &speaker, std::string_view text, bool continues)
{
    Sentence sentence;
    sentence.speaker = speaker;
    sentence.text = simplified(text);
    sentence.words = wordsOf(sentence.text);
    sentence.continues = continues;
    if (!sentence.words.empty())
        transcript.sentences.push_back(std::move(sentence));
}

/// Adds a stretch that has no full stop in it, in pieces if it is long.
void addPieces(Transcript &transcript, const std::string &speaker, std::string_view text, bool continues)
{
    std::size_t words = countWords(text);
    while (words > longestSentence) {
        std::size_t end = 0;
        for (std::size_t count = 0; count < pieceLength; ++count)
            end = text.find(' ', end + 1);
        add(transcript, speaker, text.substr(0, end), true);
        text.remove_prefix(end + 1);
        words -= pieceLength;
    }
    add(transcript, speaker, text, continues);
}

/// Adds the sentences that are whole and leaves the rest in `text`.
void takeSentences(Transcript &transcript, const std::string &speaker, std::string &text)
{
    std::size_t begin = 0;
    for (std::size_t position = 0; position < text.size(); ++position) {
        if (!endsSentence(text, position))
            continue;
        addPieces(transcript, speaker, std::string_view(text).substr(begin, position + 1 - begin), false);
        begin = position + 1;
    }
    text = simplified(std::string_view(text).substr(begin));
}

} // namespace

Transcript parseTranscript(std::string_view text)
{
    std::vector<Line> lines;
    std::size_t words = 0;
    std::size_t stops = 0;
    Transcript transcript;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        Line line = parsedLine(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.text.empty() && line.speaker.empty())
            continue;
        words += countWords(line.text);
        for (std::size_t position = 0; position < line.text.size(); ++position) {
            stops += endsSentence(line.text, position) ? 1 : 0;
            transcript.isCased =
                transcript.isCased || (line.text[position] >= 'A' && line.text[position] <= 'Z');
        }
        lines.push_back(std::move(line));
    }
    transcript.isPunctuated = stops > 0 && stops * wordsPerStop >= words;

    std::string pending;
    std::string speaker;
    const auto flush = [&] {
        addPieces(transcript, speaker, pending, false);
        pending.clear();
    };
    for (const Line &line : lines) {
        if (!transcript.isPunctuated) {
            addPieces(transcript, line.speaker, line.text, true);
            continue;
        }
        if (line.speaker != speaker || countWords(pending) > longestSentence)
            flush();
        speaker = line.speaker;
        pending += (pending.empty() ? "" : " ") + line.text;
        takeSentences(transcript, speaker, pending);
    }
    flush();
    return transcript;
}

} // namespace talvenor::server
