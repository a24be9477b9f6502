#include "store/RecordingsDecoder.h"
#include "store/RecordingsEncoder.h"

#include "StoreFixture.h"

#include "foundation/LocalizedError.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <bit>
#include <cmath>
#include <limits>
#include <sys/stat.h>

namespace talvenor {

using test::fullRecording;
using test::isSameList;
using test::isSameRecording;

namespace {

const QByteArray goodSegment = R"({"id":"11111111-2222-3333-4444-555555555555","text":"t","timestamp":1.5})";
const QByteArray goodParticipant =
    R"({"id":"11111111-2222-3333-4444-555555555555","isDetectedByAI":true,"name":"n"})";

/// A well-formed element with one key's value replaced, or left out where `value` is empty.
QByteArray element(const QByteArray &key = {}, const QByteArray &value = {})
{
    const QList<std::pair<QByteArray, QByteArray>> fields{
        {"audioFileName", "\"a.m4a\""},
        {"date", "\"2026-03-09T08:05:07Z\""},
        {"duration", "61"},
        {"id", "\"0A1B2C3D-4E5F-6789-ABCD-EF0123456789\""},
        {"participants", '[' + goodParticipant + ']'},
        {"status", "\"completed\""},
        {"summary", "\"s\""},
        {"title", "\"t\""},
        {"transcriptSegments", '[' + goodSegment + ']'},
    };
    QByteArrayList members;
    for (const auto &[name, good] : fields) {
        if (name != key)
            members.append('"' + name + "\":" + good);
        else if (!value.isEmpty())
            members.append('"' + name + "\":" + value);
    }
    return '{' + members.join(',') + '}';
}

} // namespace

class RecordingsFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void theTextHasSortedKeysAndTheStatedForms();
    void absentTextsAreLeftOutAndEmptyOnesStay();
    void numbersReadBackExactly_data();
    void numbersReadBackExactly();
    void everyCharacterReadsBack();
    void halfASurrogatePairBecomesTheReplacementCharacter();
    void aFractionOfASecondIsDropped();
    void theOrderOfTheListIsTheOrderOfTheFile();
    void anEmptyListIsAnEmptyArray();
    void anotherReaderUnderstandsTheText();

    void textsAreKeptWhileNothingChanges();
    void everyChangeIsSeen();

    void aWellFormedElementIsRead();
    void nullIsAbsentForSummaryAndSpeaker();
    void unknownKeysAreIgnored();
    void identifiersAreReadInEitherCase();
    void ofKeysThatComeTwiceTheLastCounts();
    void aByteOrderMarkIsNoHarm();
    void whatIsNotExactlySoFailsTheFile_data();
    void whatIsNotExactlySoFailsTheFile();
    void oneBadElementFailsTheFile();
    void theErrorNamesThePlace();
    void aFileCutShortAnywhereFails();
    void randomBytesFail();
    void aFileOfAHundredMegabytesIsHandled_data();
    void aFileOfAHundredMegabytesIsHandled();
    void whatIsNoFileIsAnErrorAndNoWait();

private:
    [[nodiscard]] QList<Recording> decoded(const QByteArray &content);
    [[nodiscard]] QString failure(const QByteArray &content);
    [[nodiscard]] Recording afterReload(const Recording &recording);

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

void RecordingsFileTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QStringLiteral("recordings.json"));
}

QList<Recording> RecordingsFileTest::decoded(const QByteArray &content)
{
    if (!test::writeFile(m_path, content))
        qFatal("the test's file cannot be written");
    return readRecordings(m_path);
}

QString RecordingsFileTest::failure(const QByteArray &content)
{
    try {
        static_cast<void>(decoded(content));
        return {};
    } catch (const LocalizedError &error) {
        return error.errorDescription();
    }
}

Recording RecordingsFileTest::afterReload(const Recording &recording)
{
    return decoded('[' + encodeRecording(recording) + ']').value(0);
}

void RecordingsFileTest::theTextHasSortedKeysAndTheStatedForms()
{
    const QByteArray expected = R"(  {
    "audioFileName": "meeting_2026-03-09_08-05-07.m4a",
    "date": "2026-03-09T08:05:07Z",
    "duration": 3725,
    "id": "0A1B2C3D-4E5F-6789-ABCD-EF0123456789",
    "participants": [
      {
        "id": "00000002-0000-0001-8001-020304050607",
        "isDetectedByAI": false,
        "name": "Anna"
      },
      {
        "id": "00000002-0000-0002-8001-020304050607",
        "isDetectedByAI": true,
        "name": "Jörg"
      }
    ],
    "status": "completed",
    "summary": "## Summary\nShort.",
    "title": "Weekly \"sync\" – Straße/№ 5",
    "transcriptSegments": [
      {
        "id": "00000001-0000-0001-8001-020304050607",
        "text": "Hello.",
        "timestamp": 0
      },
      {
        "id": "00000001-0000-0002-8001-020304050607",
        "speaker": "Jörg",
        "text": "Moin, grüß dich.",
        "timestamp": 62.25
      }
    ]
  })";
    QCOMPARE(encodeRecording(fullRecording()), expected);
    QVERIFY(isSameRecording(afterReload(fullRecording()), fullRecording()));
}

void RecordingsFileTest::absentTextsAreLeftOutAndEmptyOnesStay()
{
    Recording recording = fullRecording();
    recording.summary = std::nullopt;
    recording.transcriptSegments[1].speaker = std::nullopt;
    recording.participants.clear();
    QByteArray text = encodeRecording(recording);
    QVERIFY(!text.contains("\"summary\""));
    QVERIFY(!text.contains("\"speaker\""));
    QVERIFY(text.contains("\"participants\": []"));
    QVERIFY(!afterReload(recording).summary.has_value());
    QVERIFY(isSameRecording(afterReload(recording), recording));

    recording.summary = QString();
    recording.transcriptSegments[1].speaker = QString();
    recording.transcriptSegments[0].text = QString();
    text = encodeRecording(recording);
    QVERIFY(text.contains("\"summary\": \"\""));
    QVERIFY(text.contains("\"speaker\": \"\""));
    QCOMPARE(afterReload(recording).summary, std::optional(QString()));
    QVERIFY(isSameRecording(afterReload(recording), recording));
}

void RecordingsFileTest::numbersReadBackExactly_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("zero") << 0.0 << QByteArray("0");
    QTest::newRow("whole") << 7200.0 << QByteArray("7200");
    QTest::newRow("whole and large") << 1e15 << QByteArray("1000000000000000");
    QTest::newRow("larger than any exact integer")
        << std::nextafter(std::ldexp(1.0, 63), 0) << QByteArray("9223372036854774784");
    QTest::newRow("negative") << -12.0 << QByteArray("-12");
    QTest::newRow("tenth") << 0.1 << QByteArray("0.1");
    QTest::newRow("third") << 1.0 / 3 << QByteArray("0.3333333333333333");
    QTest::newRow("sum") << 0.1 + 0.2 << QByteArray("0.30000000000000004");
    QTest::newRow("tiny") << 5e-324 << QByteArray("5e-324");
    QTest::newRow("small") << 1e-7 << QByteArray("1e-07");
    QTest::newRow("negative zero") << -0.0 << QByteArray("-0.0");
}

void RecordingsFileTest::numbersReadBackExactly()
{
    QFETCH(double, number);
    QFETCH(QByteArray, text);
    Recording recording = fullRecording();
    recording.duration = number;
    recording.transcriptSegments[0].timestamp = number;
    const QByteArray encoded = encodeRecording(recording);
    QVERIFY2(encoded.contains("\"duration\": " + text + ','), encoded.constData());
    const Recording read = afterReload(recording);
    QCOMPARE(std::bit_cast<quint64>(read.duration), std::bit_cast<quint64>(number));
    QCOMPARE(std::bit_cast<quint64>(read.transcriptSegments[0].timestamp), std::bit_cast<quint64>(number));
}

void RecordingsFileTest::everyCharacterReadsBack()
{
    QString all;
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (!QChar::isSurrogate(character))
            all += QStringView(QChar::fromUcs4(character));
    }
    Recording recording = fullRecording();
    recording.title = all;
    QVERIFY(afterReload(recording).title == all);

    recording.title = QStringLiteral("\u0001\u001F\b\f\n\r\t\"\\/\u007F");
    QVERIFY(encodeRecording(recording).contains(R"("\u0001\u001f\b\f\n\r\t\"\\/)"
                                                "\x7F\""));
}

void RecordingsFileTest::halfASurrogatePairBecomesTheReplacementCharacter()
{
    const auto half = [](char16_t unit) { return QString(QChar(unit)); };
    Recording recording = fullRecording();
    recording.title = half(0xD800) + u'a' + half(0xDC00) + half(0xD83D);
    QCOMPARE(afterReload(recording).title, QStringLiteral("\uFFFDa\uFFFD\uFFFD"));
}

void RecordingsFileTest::aFractionOfASecondIsDropped()
{
    Recording recording = fullRecording();
    recording.date = recording.date.addMSecs(999);
    QCOMPARE(afterReload(recording).date, fullRecording().date);
    recording.date = fullRecording().date.toTimeZone(QTimeZone("Asia/Kathmandu"));
    QVERIFY(encodeRecording(recording).contains("\"2026-03-09T08:05:07Z\""));
}

void RecordingsFileTest::theOrderOfTheListIsTheOrderOfTheFile()
{
    const QList<Recording> list{test::longMeeting(1, 2), test::longMeeting(1, 9), test::longMeeting(1, 1)};
    RecordingsEncoder encoder;
    QByteArray text;
    for (const QByteArrayView piece : encoder.encode(list))
        text.append(piece);
    QVERIFY(isSameList(decoded(text), list));
}

void RecordingsFileTest::anEmptyListIsAnEmptyArray()
{
    RecordingsEncoder encoder;
    QByteArray text;
    for (const QByteArrayView piece : encoder.encode({}))
        text.append(piece);
    QCOMPARE(text, QByteArray("[]\n"));
    QVERIFY(decoded(text).isEmpty());
}

void RecordingsFileTest::anotherReaderUnderstandsTheText()
{
    RecordingsEncoder encoder;
    QByteArray text;
    for (const QByteArrayView piece : encoder.encode({fullRecording(), test::longMeeting(2, 1)}))
        text.append(piece);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(document.array().size(), 2);
    const QJsonObject object = document.array().first().toObject();
    QCOMPARE(object.value(QStringLiteral("title")).toString(), fullRecording().title);
    QCOMPARE(object.value(QStringLiteral("transcriptSegments")).toArray().size(), 2);
}

void RecordingsFileTest::textsAreKeptWhileNothingChanges()
{
    QList<Recording> list{test::longMeeting(1, 1), test::longMeeting(1, 2), test::longMeeting(1, 3)};
    RecordingsEncoder encoder;
    const auto addresses = [&](const QList<Recording> &recordings) {
        QList<const char *> result;
        for (const QByteArrayView piece : encoder.encode(recordings)) {
            if (piece.size() > 10)
                result.append(piece.data());
        }
        return result;
    };
    const auto first = addresses(list);
    QCOMPARE(first.size(), 3);
    QCOMPARE(addresses(list), first);

    // A new one in front moves all others; one in the middle changes; a copy with data of its own is equal.
    list.prepend(test::longMeeting(1, 4));
    list[2].title = QStringLiteral("new");
    list[1] = test::longMeeting(1, 1);
    const auto second = addresses(list);
    QCOMPARE(second.size(), 4);
    QCOMPARE(second[1], first[0]);
    QVERIFY(second[2] != first[1]);
    QCOMPARE(second[3], first[2]);
}

void RecordingsFileTest::everyChangeIsSeen()
{
    const QList<std::function<void(Recording &)>> changes{
        [](Recording &r) { r.title += u'x'; },
        [](Recording &r) { r.date = r.date.addSecs(1); },
        [](Recording &r) { r.duration += 1; },
        [](Recording &r) { r.audioFileName += u'x'; },
        [](Recording &r) { r.status = RecordingStatus::failed; },
        [](Recording &r) { r.summary = std::nullopt; },
        [](Recording &r) { r.summary = QString(); },
        [](Recording &r) { r.summary = QStringLiteral("y"); },
        [](Recording &r) { r.participants[0].name += u'x'; },
        [](Recording &r) { r.participants[0].isDetectedByAI = true; },
        [](Recording &r) { r.participants[0].id = QUuid::createUuid(); },
        [](Recording &r) { r.participants.removeLast(); },
        [](Recording &r) { r.transcriptSegments[0].text[0] = u'J'; },
        [](Recording &r) { r.transcriptSegments[0].timestamp = 1; },
        [](Recording &r) { r.transcriptSegments[0].speaker = QString(); },
        [](Recording &r) { r.transcriptSegments[1].speaker = std::nullopt; },
        [](Recording &r) { r.transcriptSegments[0].id = QUuid::createUuid(); },
        [](Recording &r) { r.transcriptSegments.clear(); },
        [](Recording &r) { r.id = QUuid::createUuid(); },
    };
    RecordingsEncoder encoder;
    QList<Recording> list{fullRecording()};
    for (const auto &change : changes) {
        list[0] = fullRecording();
        static_cast<void>(encoder.encode(list));
        change(list[0]);
        QCOMPARE(encoder.encode(list).at(1).toByteArray(), encodeRecording(list[0]));
    }
}

void RecordingsFileTest::aWellFormedElementIsRead()
{
    const QList<Recording> list = decoded('[' + element() + ']');
    QCOMPARE(list.size(), 1);
    const Recording &recording = list.first();
    QCOMPARE(recording.id, fullRecording().id);
    QCOMPARE(recording.date, fullRecording().date);
    QCOMPARE(recording.date.timeSpec(), Qt::UTC);
    QCOMPARE(recording.duration, 61.0);
    QCOMPARE(recording.audioFileName, QStringLiteral("a.m4a"));
    QCOMPARE(recording.status, RecordingStatus::completed);
    QCOMPARE(recording.summary, std::optional(QStringLiteral("s")));
    QCOMPARE(recording.transcriptSegments.size(), 1);
    QCOMPARE(recording.transcriptSegments[0].timestamp, 1.5);
    QCOMPARE(recording.participants.size(), 1);
    QVERIFY(recording.participants[0].isDetectedByAI);
    QCOMPARE(decoded(" \n[\t" + element() + " , " + element() + "\r\n] ").size(), 2);
}

void RecordingsFileTest::nullIsAbsentForSummaryAndSpeaker()
{
    QVERIFY(!decoded('[' + element("summary", "null") + ']').first().summary);
    QVERIFY(!decoded('[' + element("summary", {}) + ']').first().summary);
    const QByteArray segment =
        R"([{"id":"11111111-2222-3333-4444-555555555555","text":"t","timestamp":1,"speaker":null}])";
    QVERIFY(!decoded('[' + element("transcriptSegments", segment) + ']')
                 .first()
                 .transcriptSegments.first()
                 .speaker);
}

void RecordingsFileTest::unknownKeysAreIgnored()
{
    QByteArray extended = element();
    extended.replace("\"title\"", R"("version":{"a":[1,null,"title"]},"Title":5,"title")");
    extended.replace("\"timestamp\"", R"("confidence":0.5,"timestamp")");
    extended.replace("\"name\"", R"("email":null,"name")");
    const QList<Recording> list = decoded('[' + extended + ']');
    QVERIFY(isSameList(list, decoded('[' + element() + ']')));
}

void RecordingsFileTest::identifiersAreReadInEitherCase()
{
    const auto id = decoded('[' + element("id", "\"0a1b2c3d-4E5F-6789-abcd-EF0123456789\"") + ']').first().id;
    QCOMPARE(id, fullRecording().id);
    QVERIFY(
        decoded('[' + element("id", "\"00000000-0000-0000-0000-000000000000\"") + ']').first().id.isNull());
}

void RecordingsFileTest::ofKeysThatComeTwiceTheLastCounts()
{
    QByteArray twice = element();
    twice.replace("\"title\":\"t\"", R"("title":"first","title":"second")");
    QCOMPARE(decoded('[' + twice + ']').first().title, QStringLiteral("second"));
    twice = element();
    twice.replace("\"title\":\"t\"", R"("title":5,"title":"second")");
    QVERIFY(!failure('[' + twice + ']').isEmpty());
}

void RecordingsFileTest::aByteOrderMarkIsNoHarm()
{
    QCOMPARE(decoded("\xEF\xBB\xBF[" + element() + ']').size(), 1);
    QVERIFY(!failure("\xEF\xBB\xBF").isEmpty());
    QVERIFY(!failure("\xEF\xBB").isEmpty());
}

void RecordingsFileTest::whatIsNotExactlySoFailsTheFile_data()
{
    QTest::addColumn<QByteArray>("content");
    const auto row = [](const char *name, const QByteArray &content) { QTest::newRow(name) << content; };
    const auto one = [](const QByteArray &key, const QByteArray &value) {
        return '[' + element(key, value) + ']';
    };

    for (const char *key : {"audioFileName", "date", "duration", "id", "participants", "status", "title",
                            "transcriptSegments"}) {
        const QByteArray name(key);
        row(("missing " + name).constData(), one(name, {}));
        row(("null " + name).constData(), one(name, "null"));
        row(("object " + name).constData(), one(name, "{}"));
        row(("boolean " + name).constData(), one(name, "true"));
        row(("number or text " + name).constData(), one(name, name == "duration" ? "\"1\"" : "1"));
    }
    row("summary a number", one("summary", "1"));
    row("summary an array", one("summary", "[\"s\"]"));

    for (const char *key : {"id", "text", "timestamp"}) {
        QByteArray segment = goodSegment;
        row(("segment without " + QByteArray(key)).constData(),
            one("transcriptSegments", '[' + segment.replace(key, "other") + ']'));
    }
    for (const char *key : {"id", "name", "isDetectedByAI"}) {
        QByteArray participant = goodParticipant;
        row(("participant without " + QByteArray(key)).constData(),
            one("participants", '[' + participant.replace('"' + QByteArray(key) + '"', "\"other\"") + ']'));
    }
    QByteArray wrong = goodSegment;
    row("speaker a number",
        one("transcriptSegments", '[' + wrong.replace("\"text\"", "\"speaker\":1,\"text\"") + ']'));
    wrong = goodParticipant;
    row("isDetectedByAI a number", one("participants", '[' + wrong.replace("true", "1") + ']'));
    row("segments of numbers", one("transcriptSegments", "[1]"));
    row("participants of null", one("participants", "[null]"));

    row("unknown status", one("status", "\"done\""));
    row("status in capitals", one("status", "\"Completed\""));
    row("empty status", one("status", "\"\""));

    for (const char *form :
         {"2026-03-09", "2026-03-09T08:05:07", "2026-03-09T08:05:07+00:00", "2026-03-09T08:05:07.5Z",
          "2026-03-09t08:05:07z", "2026-03-09 08:05:07Z", "2026-02-30T08:05:07Z", "2026-13-09T08:05:07Z",
          "2026-03-09T25:05:07Z", "2026-03-09T24:00:00Z", "2026-03-09T08:60:07Z", "2026-03-09T08:05:60Z",
          "2026-3-9T08:05:07Z", "02026-03-09T08:05:07Z", "0000-03-09T08:05:07Z", "2026-03-09T08:05:07Z ", ""})
        row((QByteArray("date ") + form).constData(), one("date", '"' + QByteArray(form) + '"'));
    row("date with digits of another script", one("date", "\"２026-03-09T08:05Z\""));

    for (const char *form :
         {"", "0A1B2C3D4E5F6789ABCDEF0123456789", "{0A1B2C3D-4E5F-6789-ABCD-EF0123456789}",
          "0A1B2C3D-4E5F-6789-ABCD-EF012345678", "0A1B2C3D-4E5F-6789-ABCD-EF01234567890",
          "0A1B2C3D-4E5F-6789-ABCD-EF012345678G", "0A1B2C3D-4E5F-6789-ABCD+EF0123456789",
          "-A1B2C3D-4E5F-6789-ABCD-EF0123456789", "\\u0000A1B2C3D-4E5F-6789-ABCD-EF0123456789"})
        row((QByteArray("id ") + form).constData(), one("id", '"' + QByteArray(form) + '"'));

    for (const char *number : {"1e400", "-1e400", "1e300", "-1e300", "9223372036854775808", "1e19",
                               "123456789012345678901234567890", "NaN", "Infinity", "0x10", "01", "+1", "1.",
                               ".5", "1e", "--1", "1,5"})
        row((QByteArray("duration ") + number).constData(), one("duration", number));
    wrong = goodSegment;
    row("timestamp beyond 64 bits", one("transcriptSegments", '[' + wrong.replace("1.5", "1e300") + ']'));

    row("empty", "");
    row("blanks", " \n\t ");
    row("null", "null");
    row("number", "5");
    row("text", "\"[]\"");
    row("object", element());
    row("array of arrays", "[[]]");
    row("array of null", "[null]");
    row("array of numbers", "[1]");
    row("two documents", "[][]");
    row("something behind", "[]x");
    row("a zero byte behind", QByteArray("[]\0", 3));
    row("comma behind the last", '[' + element() + ",]");
    row("no comma between", '[' + element() + element() + ']');
    row("single quotes", "[{'id':1}]");
    row("comment", "[] // none");
    row("invalid UTF-8", one("title", "\"\xC3\x28\""));
    row("overlong UTF-8", one("title", "\"\xC0\x80\""));
    row("surrogate in UTF-8", one("title", "\"\xED\xA0\x80\""));
    row("cut UTF-8", one("title", "\"\xE2\x82\""));
    row("control character in a text", one("title", "\"a\nb\""));
    row("unknown escape", one("title", R"("\x41")"));
    row("half an escaped pair", one("title", R"("\ud800")"));
    row("UTF-16", QByteArray("\xFF\xFE[\0]\0", 6));
    row("deeply nested", QByteArray(100'000, '['));
    row("deeply nested and closed", QByteArray(100'000, '[') + QByteArray(100'000, ']'));
    row("deeply nested objects", '[' + QByteArray("{\"a\":").repeated(100'000));
    row("deeply nested in an unknown key",
        one("summary", "\"s\",\"x\":" + QByteArray(100'000, '[') + QByteArray(100'000, ']')));
}

void RecordingsFileTest::whatIsNotExactlySoFailsTheFile()
{
    QFETCH(QByteArray, content);
    QVERIFY(!failure(content).isEmpty());
}

void RecordingsFileTest::oneBadElementFailsTheFile()
{
    const QByteArray good = element();
    QCOMPARE(decoded('[' + good + ',' + good + ',' + good + ']').size(), 3);
    QVERIFY(!failure('[' + good + ',' + good + ',' + element("participants", {}) + ']').isEmpty());
}

void RecordingsFileTest::theErrorNamesThePlace()
{
    QCOMPARE(failure('[' + element() + ',' + element("status", "\"x\"") + ']'),
             QStringLiteral("[1]: \"status\" is no known status"));
    const QByteArray segments = '[' + goodSegment + ",{}]";
    QCOMPARE(failure('[' + element("transcriptSegments", segments) + ']'),
             QStringLiteral("[0].transcriptSegments[1]: \"id\" is missing"));
}

void RecordingsFileTest::aFileCutShortAnywhereFails()
{
    const QByteArray whole = '[' + encodeRecording(fullRecording()) + ']';
    QCOMPARE(decoded(whole).size(), 1);
    for (qsizetype size = 0; size < whole.size(); ++size)
        QVERIFY2(!failure(whole.left(size)).isEmpty(), QByteArray::number(size).constData());
}

void RecordingsFileTest::randomBytesFail()
{
    quint32 state = 1;
    const auto next = [&state] {
        state = state * 1664525 + 1013904223;
        return state >> 8;
    };
    for (int round = 0; round < 100; ++round) {
        QByteArray noise(qsizetype(next() % 4096), '\0');
        for (char &byte : noise)
            byte = static_cast<char>(next());
        QVERIFY(!failure(noise).isEmpty());
    }
    // Damage inside a good file: whatever it does, the program stays alive and the result is all or nothing.
    const QByteArray whole =
        '[' + encodeRecording(fullRecording()) + ',' + encodeRecording(fullRecording()) + ']';
    int failures = 0;
    for (int round = 0; round < 600; ++round) {
        QByteArray damaged = whole;
        damaged[qsizetype(next() % quint32(whole.size()))] = static_cast<char>(next());
        test::writeFile(m_path, damaged);
        try {
            QCOMPARE(readRecordings(m_path).size(), 2);
        } catch (const RecordingsFileError &) {
            ++failures;
        }
    }
    QVERIFY(failures > 60);
}

void RecordingsFileTest::aFileOfAHundredMegabytesIsHandled_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QByteArray>("repeated");
    QTest::addColumn<QByteArray>("end");
    QTest::addColumn<bool>("isGood");
    const QByteArray segment = goodSegment + ',';
    QTest::newRow("good") << '[' + element().replace(goodSegment, "").chopped(2) + segment << segment
                          << goodSegment + "]}]" << true;
    QTest::newRow("brackets") << QByteArray() << QByteArray("[") << QByteArray() << false;
    QTest::newRow("zeros") << QByteArray("[") << QByteArray("0,") << QByteArray("0]") << false;
    QTest::newRow("one text") << QByteArray("[\"") << QByteArray("a") << QByteArray("\"]") << false;
    QTest::newRow("zero bytes") << QByteArray() << QByteArray(1, '\0') << QByteArray() << false;
}

void RecordingsFileTest::aFileOfAHundredMegabytesIsHandled()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, repeated);
    QFETCH(QByteArray, end);
    QFETCH(bool, isGood);
    const QByteArray content = start + repeated.repeated(100'000'000 / repeated.size()) + end;
    const QString error = failure(content);
    QVERIFY2(error.isEmpty() == isGood, qPrintable(error));
}

void RecordingsFileTest::whatIsNoFileIsAnErrorAndNoWait()
{
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(readRecordings(m_folder->path())), PlatformError);
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(readRecordings(m_path)), PlatformError);
    const QString pipe = m_folder->filePath(QStringLiteral("pipe"));
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(readRecordings(pipe)), PlatformError);
}

} // namespace talvenor

QTEST_GUILESS_MAIN(talvenor::RecordingsFileTest)
#include "RecordingsFileTest.moc"
