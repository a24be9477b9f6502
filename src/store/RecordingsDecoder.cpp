#include "store/RecordingsDecoder.h"

#include <QFile>
#include <QFileInfo>

#include <simdjson.h>

#include <array>
#include <cmath>
#include <limits>
#include <string_view>

namespace talvenor {

namespace {

namespace dom = simdjson::dom;

/// Where the decoder stands, for the words of an error.
struct Place
{
    qsizetype recording = -1;
    const char *list = nullptr; ///< the key of the list inside the recording, if in one
    qsizetype item = -1;

    [[noreturn]] void fail(const QString &what) const
    {
        QString where = recording < 0 ? QStringLiteral("the file") : QStringLiteral("[%1]").arg(recording);
        if (list != nullptr)
            where += u'.' + QLatin1StringView(list);
        if (item >= 0)
            where += QStringLiteral("[%1]").arg(item);
        throw RecordingsFileError(where + QStringLiteral(": ") + what);
    }

    [[noreturn]] void fail(std::string_view key, const QString &what) const
    {
        fail(u'"' + QLatin1StringView(key.data(), qsizetype(key.size())) + QStringLiteral("\" ") + what);
    }
};

std::string_view text(const Place &place, std::string_view key, const dom::element &value)
{
    std::string_view result;
    if (value.get(result) != simdjson::SUCCESS)
        place.fail(key, QStringLiteral("is not a string"));
    return result;
}

QString string(const Place &place, std::string_view key, const dom::element &value)
{
    const std::string_view utf8 = text(place, key, value);
    QString decoded = QString::fromUtf8(utf8.data(), qsizetype(utf8.size()));
    // Qt takes a first character U+FEFF for a mark of the encoding and drops it; here it belongs to the text.
    if (utf8.starts_with("\xEF\xBB\xBF"))
        decoded.prepend(QChar(0xFEFF));
    return decoded;
}

std::optional<QString> optionalString(const Place &place, std::string_view key, const dom::element &value)
{
    if (value.is_null())
        return std::nullopt;
    return string(place, key, value);
}

bool boolean(const Place &place, std::string_view key, const dom::element &value)
{
    bool result = false;
    if (value.get(result) != simdjson::SUCCESS)
        place.fail(key, QStringLiteral("is not a boolean"));
    return result;
}

double seconds(const Place &place, std::string_view key, const dom::element &value)
{
    double result = 0;
    if (value.get(result) != simdjson::SUCCESS)
        place.fail(key, QStringLiteral("is not a number"));
    // To show a time beyond 64 bits is a programming error, which would let a file end the program.
    constexpr double limit = 9223372036854775808.0;
    if (!std::isfinite(result) || result >= limit || result < -limit)
        place.fail(key, QStringLiteral("is beyond any time"));
    return result;
}

/// The value of a hexadecimal digit, or a value above 15.
constexpr std::array<std::uint8_t, 256> hexValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(0xFF);
    for (std::uint8_t i = 0; i < 10; ++i)
        values[std::size_t('0') + i] = i;
    for (std::uint8_t i = 0; i < 6; ++i) {
        values[std::size_t('a') + i] = std::uint8_t(10 + i);
        values[std::size_t('A') + i] = std::uint8_t(10 + i);
    }
    return values;
}();

QUuid uuid(const Place &place, std::string_view key, const dom::element &value)
{
    // Where the 16 bytes stand in "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx".
    static constexpr std::array<std::size_t, 16> positions{0,  2,  4,  6,  9,  11, 14, 16,
                                                           19, 21, 24, 26, 28, 30, 32, 34};
    const std::string_view form = text(place, key, value);
    bool isValid =
        form.size() == 36 && form[8] == '-' && form[13] == '-' && form[18] == '-' && form[23] == '-';
    std::array<char, 16> bytes{};
    for (std::size_t i = 0; isValid && i < bytes.size(); ++i) {
        const std::uint8_t high = hexValues[static_cast<unsigned char>(form[positions[i]])];
        const std::uint8_t low = hexValues[static_cast<unsigned char>(form[positions[i] + 1])];
        isValid = (high | low) <= 0xF;
        bytes[i] = static_cast<char>(high << 4 | low);
    }
    if (!isValid)
        place.fail(key, QStringLiteral("is not a UUID"));
    return QUuid::fromRfc4122(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
}

QDateTime date(const Place &place, std::string_view key, const dom::element &value)
{
    static constexpr std::string_view pattern = "0000-00-00T00:00:00Z";
    const std::string_view form = text(place, key, value);
    bool isValid = form.size() == pattern.size();
    for (std::size_t i = 0; isValid && i < form.size(); ++i)
        isValid = pattern[i] == '0' ? form[i] >= '0' && form[i] <= '9' : form[i] == pattern[i];
    const auto number = [form](std::size_t from, std::size_t length) {
        int result = 0;
        for (std::size_t i = from; i < from + length; ++i)
            result = result * 10 + (form[i] - '0');
        return result;
    };
    QDateTime result;
    if (isValid) {
        const QDate day(number(0, 4), number(5, 2), number(8, 2));
        const QTime time(number(11, 2), number(14, 2), number(17, 2));
        // An invalid time of a valid day would pass for midnight.
        if (time.isValid())
            result = QDateTime(day, time, Qt::UTC);
    }
    if (!result.isValid())
        place.fail(key, QStringLiteral("is not a date of the form yyyy-MM-ddTHH:mm:ssZ"));
    return result;
}

RecordingStatus status(const Place &place, std::string_view key, const dom::element &value)
{
    const auto result = recordingStatusFromString(string(place, key, value));
    if (!result)
        place.fail(key, QStringLiteral("is no known status"));
    return *result;
}

/// Calls `field` with key and value of each member of an object, after having looked at the type.
template<typename Field>
void eachField(const Place &place, const dom::element &value, Field field)
{
    dom::object object;
    if (value.get(object) != simdjson::SUCCESS)
        place.fail(QStringLiteral("an object is needed here"));
    for (const dom::key_value_pair pair : object)
        field(pair.key, pair.value);
}

template<typename T>
T required(const Place &place, std::optional<T> &value, std::string_view key)
{
    if (!value)
        place.fail(key, QStringLiteral("is missing"));
    return *std::move(value);
}

// The records are put together from finished parts, since their defaults are not free: a new identifier asks
// the system for random numbers.

Participant participant(const Place &place, const dom::element &value)
{
    std::optional<QUuid> id;
    std::optional<QString> name;
    std::optional<bool> isDetectedByAI;
    eachField(place, value, [&](std::string_view key, const dom::element &field) {
        if (key == "id")
            id = uuid(place, key, field);
        else if (key == "name")
            name = string(place, key, field);
        else if (key == "isDetectedByAI")
            isDetectedByAI = boolean(place, key, field);
    });
    return {.id = required(place, id, "id"),
            .name = required(place, name, "name"),
            .isDetectedByAI = required(place, isDetectedByAI, "isDetectedByAI")};
}

TranscriptSegment segment(const Place &place, const dom::element &value)
{
    std::optional<QUuid> id;
    std::optional<double> timestamp;
    std::optional<QString> spoken;
    std::optional<QString> speaker;
    eachField(place, value, [&](std::string_view key, const dom::element &field) {
        if (key == "id")
            id = uuid(place, key, field);
        else if (key == "text")
            spoken = string(place, key, field);
        else if (key == "timestamp")
            timestamp = seconds(place, key, field);
        else if (key == "speaker")
            speaker = optionalString(place, key, field);
    });
    return {.id = required(place, id, "id"),
            .timestamp = required(place, timestamp, "timestamp"),
            .text = required(place, spoken, "text"),
            .speaker = std::move(speaker)};
}

template<typename Item>
QList<Item> list(Place place, std::string_view key, const char *name, const dom::element &value,
                 Item (*decodeItem)(const Place &, const dom::element &))
{
    dom::array array;
    if (value.get(array) != simdjson::SUCCESS)
        place.fail(key, QStringLiteral("is not an array"));
    place.list = name;
    place.item = 0;
    QList<Item> items;
    // No more than a long meeting has: a hostile file must not reserve gigabytes with nothing to fill them.
    items.reserve(qsizetype(std::min<std::size_t>(array.size(), 10'000)));
    for (const dom::element item : array) {
        items.append(decodeItem(place, item));
        ++place.item;
    }
    return items;
}

Recording recording(const Place &place, const dom::element &value)
{
    std::optional<QUuid> id;
    std::optional<QString> title;
    std::optional<QDateTime> when;
    std::optional<double> duration;
    std::optional<QString> audioFileName;
    std::optional<RecordingStatus> state;
    std::optional<QList<TranscriptSegment>> segments;
    std::optional<QString> summary;
    std::optional<QList<Participant>> participants;
    eachField(place, value, [&](std::string_view key, const dom::element &field) {
        if (key == "audioFileName")
            audioFileName = string(place, key, field);
        else if (key == "date")
            when = date(place, key, field);
        else if (key == "duration")
            duration = seconds(place, key, field);
        else if (key == "id")
            id = uuid(place, key, field);
        else if (key == "participants")
            participants = list(place, key, "participants", field, &participant);
        else if (key == "status")
            state = status(place, key, field);
        else if (key == "summary")
            summary = optionalString(place, key, field);
        else if (key == "title")
            title = string(place, key, field);
        else if (key == "transcriptSegments")
            segments = list(place, key, "transcriptSegments", field, &segment);
    });
    return {.id = required(place, id, "id"),
            .title = required(place, title, "title"),
            .date = required(place, when, "date"),
            .duration = required(place, duration, "duration"),
            .audioFileName = required(place, audioFileName, "audioFileName"),
            .status = required(place, state, "status"),
            .transcriptSegments = required(place, segments, "transcriptSegments"),
            .summary = std::move(summary),
            .participants = required(place, participants, "participants")};
}

/// The whole file, with the room behind it that the parser reads into.
simdjson::padded_string contents(const QString &path)
{
    // To open a pipe would wait for somebody to write into it.
    if (!QFileInfo(path).isFile())
        throw PlatformError(QStringLiteral("file"), EINVAL, QStringLiteral("not a regular file: ") + path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw PlatformError(QStringLiteral("file"), EIO, file.errorString() + QStringLiteral(": ") + path);
    const qint64 size = file.size();
    if (size > qint64(std::numeric_limits<std::uint32_t>::max()))
        throw RecordingsFileError(QStringLiteral("the file is too large"));
    simdjson::padded_string content{std::size_t(size)};
    for (qint64 done = 0; done < size;) {
        const qint64 count = file.read(content.data() + done, size - done);
        if (count < 0)
            throw PlatformError(QStringLiteral("file"), EIO,
                                file.errorString() + QStringLiteral(": ") + path);
        if (count == 0)
            throw RecordingsFileError(QStringLiteral("the file became shorter while it was read"));
        done += count;
    }
    return content;
}

} // namespace

QList<Recording> readRecordings(const QString &path)
{
    const simdjson::padded_string content = contents(path);
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const std::string_view all = content;
    const std::size_t start = all.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;

    dom::parser parser;
    dom::element root;
    // The padding that it asks for stands behind the content.
    const auto code = parser.parse(content.data() + start, content.size() - start, false).get(root);
    if (code != simdjson::SUCCESS)
        throw RecordingsFileError(QString::fromLatin1(simdjson::error_message(code)));
    dom::array array;
    Place place;
    if (root.get(array) != simdjson::SUCCESS)
        place.fail(QStringLiteral("an array is needed"));
    QList<Recording> recordings;
    place.recording = 0;
    for (const dom::element element : array) {
        recordings.append(recording(place, element));
        ++place.recording;
    }
    return recordings;
}

} // namespace talvenor
