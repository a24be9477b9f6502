#include "store/RecordingsEncoder.h"

#include "foundation/ProgrammingError.h"

#include <QHash>

#include <array>
#include <charconv>
#include <cmath>

namespace talvenor {

namespace {

constexpr char lowerHexDigits[] = "0123456789abcdef";
constexpr char upperHexDigits[] = "0123456789ABCDEF";

/// Writes JSON into a byte array.
///
/// The array is grown ahead of each value by the most that the value can need, so that the loops write
/// without looking for the end.
class JsonWriter
{
public:
    /// Something known to be plain: punctuation, keys, indentation.
    void raw(QByteArrayView text)
    {
        char *at = ensure(text.size());
        std::copy(text.begin(), text.end(), at);
        advanceTo(at + text.size());
    }

    void string(QStringView text)
    {
        // A control character takes six bytes for one unit, anything else at most three.
        char *at = ensure(text.size() * 6 + 2);
        *at++ = '"';
        const char16_t *unit = text.utf16();
        const char16_t *const end = unit + text.size();
        while (unit != end) {
            const char16_t value = *unit++;
            if (value < 0x80)
                at = ascii(at, char(value));
            else if (value < 0x800)
                at = bytes(at, {0xC0U | (value >> 6), 0x80U | (value & 0x3FU)});
            else if (QChar::isHighSurrogate(value) && unit != end && QChar::isLowSurrogate(*unit))
                at = supplementary(at, QChar::surrogateToUcs4(value, *unit++));
            else
                at =
                    threeBytes(at, QChar::isSurrogate(value) ? char16_t(QChar::ReplacementCharacter) : value);
        }
        *at++ = '"';
        advanceTo(at);
    }

    void number(double value)
    {
        if (!std::isfinite(value))
            programmingError(QStringLiteral("a number that JSON cannot hold"));
        // The longest is a whole number of 309 digits with a sign.
        constexpr qsizetype longest = 400;
        char *at = ensure(longest);
        // Whole numbers are what timers and most timestamps give; they look best as such.
        const std::to_chars_result result =
            std::trunc(value) == value ? std::to_chars(at, at + longest, value, std::chars_format::fixed)
                                       : std::to_chars(at, at + longest, value);
        advanceTo(result.ptr);
        if (value == 0 && std::signbit(value))
            raw(".0"); // "-0" would be read as the integer 0
    }

    void boolean(bool value) { raw(value ? QByteArrayView("true") : QByteArrayView("false")); }

    void uuid(const QUuid &id)
    {
        const QByteArray binary = id.toRfc4122();
        char *at = ensure(38);
        *at++ = '"';
        for (qsizetype i = 0; i < binary.size(); ++i) {
            if (i == 4 || i == 6 || i == 8 || i == 10)
                *at++ = '-';
            const auto byte = static_cast<unsigned char>(binary[i]);
            *at++ = upperHexDigits[byte >> 4];
            *at++ = upperHexDigits[byte & 0xF];
        }
        *at++ = '"';
        advanceTo(at);
    }

    void date(const QDateTime &instant)
    {
        const QDateTime utc = instant.toUTC();
        const QDate day = utc.date();
        const QTime time = utc.time();
        if (!utc.isValid() || day.year() < 0 || day.year() > 9999)
            programmingError(QStringLiteral("a date that cannot be written"));
        char *at = ensure(22);
        *at++ = '"';
        at = digits(at, day.year() / 100);
        at = digits(at, day.year() % 100);
        const std::array<std::pair<char, int>, 5> rest{{{'-', day.month()},
                                                        {'-', day.day()},
                                                        {'T', time.hour()},
                                                        {':', time.minute()},
                                                        {':', time.second()}}};
        for (const auto &[separator, value] : rest) {
            *at++ = separator;
            at = digits(at, value);
        }
        *at++ = 'Z';
        *at++ = '"';
        advanceTo(at);
    }

    [[nodiscard]] QByteArray take()
    {
        m_text.truncate(m_size);
        m_text.squeeze(); // it is kept for long
        return std::move(m_text);
    }

private:
    char *ensure(qsizetype more)
    {
        if (m_text.size() - m_size < more)
            m_text.resize(std::max(m_text.size() * 2, m_size + more));
        return m_text.data() + m_size;
    }

    void advanceTo(const char *end) { m_size = end - m_text.constData(); }

    static char *bytes(char *at, std::initializer_list<unsigned> values)
    {
        for (const unsigned value : values)
            *at++ = static_cast<char>(value);
        return at;
    }

    static char *ascii(char *at, char value)
    {
        if (value >= 0x20 && value != '"' && value != '\\') {
            *at++ = value;
            return at;
        }
        *at++ = '\\';
        switch (value) {
        case '"':
        case '\\':
            *at++ = value;
            break;
        case '\b':
            *at++ = 'b';
            break;
        case '\f':
            *at++ = 'f';
            break;
        case '\n':
            *at++ = 'n';
            break;
        case '\r':
            *at++ = 'r';
            break;
        case '\t':
            *at++ = 't';
            break;
        default:
            for (const char piece : {'u', '0', '0', lowerHexDigits[value >> 4], lowerHexDigits[value & 0xF]})
                *at++ = piece;
        }
        return at;
    }

    static char *threeBytes(char *at, char16_t value)
    {
        return bytes(at, {0xE0U | (value >> 12), 0x80U | ((value >> 6) & 0x3FU), 0x80U | (value & 0x3FU)});
    }

    static char *supplementary(char *at, char32_t value)
    {
        return bytes(at, {0xF0U | (value >> 18), 0x80U | ((value >> 12) & 0x3FU),
                          0x80U | ((value >> 6) & 0x3FU), 0x80U | (value & 0x3FU)});
    }

    static char *digits(char *at, int twoDigits)
    {
        *at++ = static_cast<char>('0' + twoDigits / 10);
        *at++ = static_cast<char>('0' + twoDigits % 10);
        return at;
    }

    QByteArray m_text;
    qsizetype m_size = 0; ///< how much of m_text is written
};

void writeParticipant(JsonWriter &json, const Participant &participant)
{
    json.raw("      {\n        \"id\": ");
    json.uuid(participant.id);
    json.raw(",\n        \"isDetectedByAI\": ");
    json.boolean(participant.isDetectedByAI);
    json.raw(",\n        \"name\": ");
    json.string(participant.name);
    json.raw("\n      }");
}

void writeSegment(JsonWriter &json, const TranscriptSegment &segment)
{
    json.raw("      {\n        \"id\": ");
    json.uuid(segment.id);
    if (segment.speaker) {
        json.raw(",\n        \"speaker\": ");
        json.string(*segment.speaker);
    }
    json.raw(",\n        \"text\": ");
    json.string(segment.text);
    json.raw(",\n        \"timestamp\": ");
    json.number(segment.timestamp);
    json.raw("\n      }");
}

template<typename Item>
void writeArray(JsonWriter &json, const QList<Item> &items, void (*writeItem)(JsonWriter &, const Item &))
{
    if (items.isEmpty()) {
        json.raw("[]");
        return;
    }
    QByteArrayView separator = "[\n";
    for (const Item &item : items) {
        json.raw(separator);
        writeItem(json, item);
        separator = ",\n";
    }
    json.raw("\n    ]");
}

// Two values that share their data are equal without a look at it.
bool isSame(const QString &a, const QString &b)
{
    return (a.constData() == b.constData() && a.size() == b.size()) || a == b;
}

bool isSame(const std::optional<QString> &a, const std::optional<QString> &b)
{
    return a.has_value() == b.has_value() && (!a || isSame(*a, *b));
}

bool isSame(const Participant &a, const Participant &b)
{
    return a.id == b.id && a.isDetectedByAI == b.isDetectedByAI && isSame(a.name, b.name);
}

bool isSame(const TranscriptSegment &a, const TranscriptSegment &b)
{
    return a.id == b.id && a.timestamp == b.timestamp && isSame(a.text, b.text) &&
           isSame(a.speaker, b.speaker);
}

template<typename Item>
bool isSame(const QList<Item> &a, const QList<Item> &b)
{
    return a.size() == b.size() &&
           (a.constData() == b.constData() ||
            std::equal(a.begin(), a.end(), b.begin(),
                       [](const Item &left, const Item &right) { return isSame(left, right); }));
}

bool isSame(const Recording &a, const Recording &b)
{
    return a.id == b.id && a.status == b.status && a.duration == b.duration && a.date == b.date &&
           isSame(a.title, b.title) && isSame(a.audioFileName, b.audioFileName) &&
           isSame(a.summary, b.summary) && isSame(a.participants, b.participants) &&
           isSame(a.transcriptSegments, b.transcriptSegments);
}

} // namespace

QByteArray encodeRecording(const Recording &recording)
{
    JsonWriter json;
    json.raw("  {\n    \"audioFileName\": ");
    json.string(recording.audioFileName);
    json.raw(",\n    \"date\": ");
    json.date(recording.date);
    json.raw(",\n    \"duration\": ");
    json.number(recording.duration);
    json.raw(",\n    \"id\": ");
    json.uuid(recording.id);
    json.raw(",\n    \"participants\": ");
    writeArray(json, recording.participants, &writeParticipant);
    json.raw(",\n    \"status\": ");
    json.string(stringForm(recording.status));
    if (recording.summary) {
        json.raw(",\n    \"summary\": ");
        json.string(*recording.summary);
    }
    json.raw(",\n    \"title\": ");
    json.string(recording.title);
    json.raw(",\n    \"transcriptSegments\": ");
    writeArray(json, recording.transcriptSegments, &writeSegment);
    json.raw("\n  }");
    return json.take();
}

const std::vector<QByteArrayView> &RecordingsEncoder::encode(const QList<Recording> &list)
{
    QHash<QUuid, std::size_t> places;
    places.reserve(qsizetype(m_entries.size()));
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        places.insert(m_entries[i].recording.id, i);

    std::vector<Entry> entries;
    entries.reserve(std::size_t(list.size()));
    for (const Recording &recording : list) {
        const auto place = places.constFind(recording.id);
        if (place != places.constEnd() && isSame(m_entries[*place].recording, recording))
            entries.push_back({recording, m_entries[*place].text});
        else
            entries.push_back({recording, encodeRecording(recording)});
    }
    m_entries = std::move(entries);

    m_pieces.clear();
    QByteArrayView separator = "[\n";
    for (const Entry &entry : m_entries) {
        m_pieces.push_back(separator);
        m_pieces.emplace_back(entry.text);
        separator = ",\n";
    }
    m_pieces.push_back(m_entries.empty() ? QByteArrayView("[]\n") : QByteArrayView("\n]\n"));
    return m_pieces;
}

} // namespace talvenor
