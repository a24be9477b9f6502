#include "store/RecordingsEncoder.h"

#include "StoreFixture.h"

#include "store/RecordingsDecoder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <bit>
#include <cmath>
#include <functional>

namespace talvenor {

using test::fullRecording;
using test::isSameList;
using test::isSameRecording;

namespace {

QList<Recording> decoded(const QByteArray &content)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("recordings.json"));
    if (!test::writeFile(path, content))
        qFatal("the test's file cannot be written");
    return readRecordings(path);
}

Recording afterReload(const Recording &recording)
{
    return decoded('[' + encodeRecording(recording) + ']').value(0);
}

} // namespace

class RecordingsEncoderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
};

void RecordingsEncoderTest::theTextHasSortedKeysAndTheStatedForms()
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

void RecordingsEncoderTest::absentTextsAreLeftOutAndEmptyOnesStay()
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

void RecordingsEncoderTest::numbersReadBackExactly_data()
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

void RecordingsEncoderTest::numbersReadBackExactly()
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

void RecordingsEncoderTest::everyCharacterReadsBack()
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

void RecordingsEncoderTest::halfASurrogatePairBecomesTheReplacementCharacter()
{
    const auto half = [](char16_t unit) { return QString(QChar(unit)); };
    Recording recording = fullRecording();
    recording.title = half(0xD800) + u'a' + half(0xDC00) + half(0xD83D);
    QCOMPARE(afterReload(recording).title, QStringLiteral("\uFFFDa\uFFFD\uFFFD"));
}

void RecordingsEncoderTest::aFractionOfASecondIsDropped()
{
    Recording recording = fullRecording();
    recording.date = recording.date.addMSecs(999);
    QCOMPARE(afterReload(recording).date, fullRecording().date);
    recording.date = fullRecording().date.toTimeZone(QTimeZone("Asia/Kathmandu"));
    QVERIFY(encodeRecording(recording).contains("\"2026-03-09T08:05:07Z\""));
}

void RecordingsEncoderTest::theOrderOfTheListIsTheOrderOfTheFile()
{
    const QList<Recording> list{test::longMeeting(1, 2), test::longMeeting(1, 9), test::longMeeting(1, 1)};
    RecordingsEncoder encoder;
    QByteArray text;
    for (const QByteArrayView piece : encoder.encode(list))
        text.append(piece);
    QVERIFY(isSameList(decoded(text), list));
}

void RecordingsEncoderTest::anEmptyListIsAnEmptyArray()
{
    RecordingsEncoder encoder;
    QByteArray text;
    for (const QByteArrayView piece : encoder.encode({}))
        text.append(piece);
    QCOMPARE(text, QByteArray("[]\n"));
    QVERIFY(decoded(text).isEmpty());
}

void RecordingsEncoderTest::anotherReaderUnderstandsTheText()
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

void RecordingsEncoderTest::textsAreKeptWhileNothingChanges()
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

void RecordingsEncoderTest::everyChangeIsSeen()
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

} // namespace talvenor

QTEST_GUILESS_MAIN(talvenor::RecordingsEncoderTest)
#include "RecordingsEncoderTest.moc"
