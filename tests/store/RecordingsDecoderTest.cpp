#include "store/RecordingsDecoder.h"
#include "store/RecordingsEncoder.h"

#include "StoreFixture.h"

#include "foundation/LocalizedError.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace talvenor {

using test::fullRecording;
using test::isSameList;

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

class RecordingsDecoderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

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

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

void RecordingsDecoderTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QStringLiteral("recordings.json"));
}

QList<Recording> RecordingsDecoderTest::decoded(const QByteArray &content)
{
    if (!test::writeFile(m_path, content))
        qFatal("the test's file cannot be written");
    return readRecordings(m_path);
}

QString RecordingsDecoderTest::failure(const QByteArray &content)
{
    try {
        static_cast<void>(decoded(content));
        return {};
    } catch (const LocalizedError &error) {
        return error.errorDescription();
    }
}

void RecordingsDecoderTest::aWellFormedElementIsRead()
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

void RecordingsDecoderTest::nullIsAbsentForSummaryAndSpeaker()
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

void RecordingsDecoderTest::unknownKeysAreIgnored()
{
    QByteArray extended = element();
    extended.replace("\"title\"", R"("version":{"a":[1,null,"title"]},"Title":5,"title")");
    extended.replace("\"timestamp\"", R"("confidence":0.5,"timestamp")");
    extended.replace("\"name\"", R"("email":null,"name")");
    const QList<Recording> list = decoded('[' + extended + ']');
    QVERIFY(isSameList(list, decoded('[' + element() + ']')));
}

void RecordingsDecoderTest::identifiersAreReadInEitherCase()
{
    const auto id = decoded('[' + element("id", "\"0a1b2c3d-4E5F-6789-abcd-EF0123456789\"") + ']').first().id;
    QCOMPARE(id, fullRecording().id);
    QVERIFY(
        decoded('[' + element("id", "\"00000000-0000-0000-0000-000000000000\"") + ']').first().id.isNull());
}

void RecordingsDecoderTest::ofKeysThatComeTwiceTheLastCounts()
{
    QByteArray twice = element();
    twice.replace("\"title\":\"t\"", R"("title":"first","title":"second")");
    QCOMPARE(decoded('[' + twice + ']').first().title, QStringLiteral("second"));
    twice = element();
    twice.replace("\"title\":\"t\"", R"("title":5,"title":"second")");
    QVERIFY(!failure('[' + twice + ']').isEmpty());
}

void RecordingsDecoderTest::aByteOrderMarkIsNoHarm()
{
    QCOMPARE(decoded("\xEF\xBB\xBF[" + element() + ']').size(), 1);
    QVERIFY(!failure("\xEF\xBB\xBF").isEmpty());
    QVERIFY(!failure("\xEF\xBB").isEmpty());
}

void RecordingsDecoderTest::whatIsNotExactlySoFailsTheFile_data()
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

void RecordingsDecoderTest::whatIsNotExactlySoFailsTheFile()
{
    QFETCH(QByteArray, content);
    QVERIFY(!failure(content).isEmpty());
}

void RecordingsDecoderTest::oneBadElementFailsTheFile()
{
    const QByteArray good = element();
    QCOMPARE(decoded('[' + good + ',' + good + ',' + good + ']').size(), 3);
    QVERIFY(!failure('[' + good + ',' + good + ',' + element("participants", {}) + ']').isEmpty());
}

void RecordingsDecoderTest::theErrorNamesThePlace()
{
    QCOMPARE(failure('[' + element() + ',' + element("status", "\"x\"") + ']'),
             QStringLiteral("[1]: \"status\" is no known status"));
    const QByteArray segments = '[' + goodSegment + ",{}]";
    QCOMPARE(failure('[' + element("transcriptSegments", segments) + ']'),
             QStringLiteral("[0].transcriptSegments[1]: \"id\" is missing"));
}

void RecordingsDecoderTest::aFileCutShortAnywhereFails()
{
    const QByteArray whole = '[' + encodeRecording(fullRecording()) + ']';
    QCOMPARE(decoded(whole).size(), 1);
    for (qsizetype size = 0; size < whole.size(); ++size)
        QVERIFY2(!failure(whole.left(size)).isEmpty(), QByteArray::number(size).constData());
}

void RecordingsDecoderTest::randomBytesFail()
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

void RecordingsDecoderTest::aFileOfAHundredMegabytesIsHandled_data()
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

void RecordingsDecoderTest::aFileOfAHundredMegabytesIsHandled()
{
    QFETCH(QByteArray, start);
    QFETCH(QByteArray, repeated);
    QFETCH(QByteArray, end);
    QFETCH(bool, isGood);
    const QByteArray content = start + repeated.repeated(100'000'000 / repeated.size()) + end;
    const QString error = failure(content);
    QVERIFY2(error.isEmpty() == isGood, qPrintable(error));
}

void RecordingsDecoderTest::whatIsNoFileIsAnErrorAndNoWait()
{
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(readRecordings(m_folder->path())), PlatformError);
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(readRecordings(m_path)), PlatformError);
    const QString pipe = m_folder->filePath(QStringLiteral("pipe"));
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(readRecordings(pipe)), PlatformError);
}

} // namespace talvenor

QTEST_GUILESS_MAIN(talvenor::RecordingsDecoderTest)
#include "RecordingsDecoderTest.moc"
