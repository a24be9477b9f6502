#include "server/summaries/Text.h"

#include <cstdint>
#include <optional>

namespace talvenor::server {

namespace {

struct Decoded
{
    char32_t character;
    std::size_t size; ///< bytes
};

/// The character at `position`; U+FFFD of one byte for what is not UTF-8.
Decoded decode(std::string_view text, std::size_t position)
{
    const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = byteAt(position);
    if (lead < 0x80)
        return {lead, 1};
    std::size_t size = 0;
    char32_t character = 0;
    if (lead >= 0xC2 && lead < 0xE0) {
        size = 2;
        character = lead & 0x1FU;
    } else if (lead >= 0xE0 && lead < 0xF0) {
        size = 3;
        character = lead & 0x0FU;
    } else if (lead >= 0xF0 && lead < 0xF5) {
        size = 4;
        character = lead & 0x07U;
    }
    if (size == 0 || position + size > text.size())
        return {0xFFFD, 1};
    for (std::size_t index = 1; index < size; ++index) {
        const unsigned char next = byteAt(position + index);
        if ((next & 0xC0U) != 0x80U)
            return {0xFFFD, 1};
        character = (character << 6U) | (next & 0x3FU);
    }
    return {character, size};
}

void append(std::string &text, char32_t character)
{
    const auto push = [&text](char32_t bits) { text += static_cast<char>(static_cast<unsigned char>(bits)); };
    if (character < 0x80) {
        push(character);
    } else if (character < 0x800) {
        push(0xC0U | (character >> 6U));
        push(0x80U | (character & 0x3FU));
    } else if (character < 0x10000) {
        push(0xE0U | (character >> 12U));
        push(0x80U | ((character >> 6U) & 0x3FU));
        push(0x80U | (character & 0x3FU));
    } else {
        push(0xF0U | (character >> 18U));
        push(0x80U | ((character >> 12U) & 0x3FU));
        push(0x80U | ((character >> 6U) & 0x3FU));
        push(0x80U | (character & 0x3FU));
    }
}

bool within(char32_t character, char32_t first, char32_t last)
{
    return character >= first && character <= last;
}

char32_t lower(char32_t c)
{
    if (within(c, U'A', U'Z') || (within(c, 0xC0, 0xDE) && c != 0xD7) ||
        (within(c, 0x391, 0x3A9) && c != 0x3A2) || within(c, 0x410, 0x42F))
        return c + 0x20;
    // In Latin Extended-A the letters stand in pairs, the capital first; 0x130, 0x131, 0x138 and 0x149 are
    // single, and from 0x139 to 0x148 and from 0x179 on capitals have odd numbers.
    if (within(c, 0x139, 0x148) || within(c, 0x179, 0x17E))
        return c % 2 == 1 ? c + 1 : c;
    if (c == 0x178)
        return 0xFF;
    if (within(c, 0x100, 0x177) && c != 0x130 && c != 0x131 && c != 0x138 && c != 0x149)
        return c % 2 == 0 ? c + 1 : c;
    if (within(c, 0x400, 0x40F))
        return c + 0x50;
    if (c == 0x1E9E)
        return 0xDF;
    return c;
}

char32_t upper(char32_t c)
{
    if (within(c, U'a', U'z') || (within(c, 0xE0, 0xFE) && c != 0xF7) ||
        (within(c, 0x3B1, 0x3C9) && c != 0x3C2) || within(c, 0x430, 0x44F))
        return c - 0x20;
    if (c > 0x100 && c < 0x180 && lower(c - 1) == c)
        return c - 1;
    return c;
}

/// Letters and digits. Beyond Latin everything is taken for one that is no punctuation, blank or symbol.
bool isLetter(char32_t c)
{
    if (c < 0x80)
        return within(c, U'a', U'z') || within(c, U'A', U'Z') || within(c, U'0', U'9');
    if (c < 0xC0)
        return c == 0xAA || c == 0xB5 || c == 0xBA;
    return c != 0xD7 && c != 0xF7 && !within(c, 0x2000, 0x2BFF) && !within(c, 0x3000, 0x303F) &&
           !within(c, 0xE000, 0xF8FF) && !within(c, 0xFE00, 0xFE6F) && !within(c, 0xFF00, 0xFF0F) &&
           c != 0xFEFF && c != 0xFFFD && c < 0x1F000;
}

bool isBlank(char32_t c)
{
    return c <= 0x20 || within(c, 0x7F, 0xA0) || within(c, 0x2000, 0x200F) || within(c, 0x2028, 0x202F) ||
           within(c, 0x205F, 0x206F) || c == 0x3000 || c == 0xFEFF || c == 0xFFFD;
}

bool isJoiner(char32_t c)
{
    return c == U'\'' || c == U'-' || c == 0x2019 || c == 0x2010;
}

} // namespace

std::string lowerCase(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const Decoded next = decode(text, position);
        append(result, next.character == 0x2019 ? U'\'' : lower(next.character));
        position += next.size;
    }
    return result;
}

std::string capitalised(std::string_view word)
{
    std::string result;
    bool first = true;
    for (std::size_t position = 0; position < word.size();) {
        const Decoded next = decode(word, position);
        append(result, first ? upper(next.character) : next.character);
        first = next.character == U'-';
        position += next.size;
    }
    return result;
}

bool isCapitalised(std::string_view word)
{
    return !word.empty() && lower(decode(word, 0).character) != decode(word, 0).character;
}

std::vector<Word> wordsOf(std::string_view text)
{
    std::vector<Word> words;
    std::optional<std::size_t> begin;
    bool punctuation = false;
    const auto close = [&](std::size_t end) {
        if (!begin)
            return;
        Word word;
        word.text = std::string(text.substr(*begin, end - *begin));
        word.lower = lowerCase(word.text);
        word.afterPunctuation = punctuation;
        words.push_back(std::move(word));
        begin.reset();
        punctuation = false;
    };
    for (std::size_t position = 0; position < text.size();) {
        const Decoded next = decode(text, position);
        const std::size_t after = position + next.size;
        if (isLetter(next.character)) {
            if (!begin)
                begin = position;
        } else if (begin && isJoiner(next.character) && after < text.size() &&
                   isLetter(decode(text, after).character)) {
            // The word goes on behind it.
        } else {
            close(position);
            punctuation = punctuation || !isBlank(next.character);
        }
        position = after;
    }
    close(text.size());
    return words;
}

std::string phraseLine(const std::vector<Word> &words)
{
    std::string line = " ";
    for (const Word &word : words)
        line.append(word.lower).append(" ");
    return line;
}

std::string simplified(std::string_view text)
{
    std::string result;
    bool pending = false;
    for (std::size_t position = 0; position < text.size();) {
        const Decoded next = decode(text, position);
        if (isBlank(next.character)) {
            pending = !result.empty();
        } else {
            if (pending)
                result += ' ';
            pending = false;
            append(result, next.character);
        }
        position += next.size;
    }
    return result;
}

} // namespace talvenor::server
