#include "speech/SegmentGrouping.h"

#include <QSet>
#include <QTest>

using namespace talvenor;

namespace {

QList<TranscriptSegment> makeWords(const QStringList &texts, double firstTimestamp = 1)
{
    QList<TranscriptSegment> words;
    for (const QString &text : texts) {
        TranscriptSegment word;
        word.text = text;
        word.timestamp = firstTimestamp + double(words.size()) / 2;
        words.append(word);
    }
    return words;
}

QStringList numbered(int count)
{
    QStringList texts;
    for (int number = 1; number <= count; ++number)
        texts.append(QStringLiteral("w%1").arg(number));
    return texts;
}

QStringList textsOf(const QList<TranscriptSegment> &lines)
{
    QStringList texts;
    for (const TranscriptSegment &line : lines)
        texts.append(line.text);
    return texts;
}

} // namespace

/// The two rules by which words become lines.
class SegmentGroupingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noWordsGiveNoLines() { QVERIFY(groupSegments({}).isEmpty()); }

    void aLineEndsAtAFullStopAndHasTheTimeOfItsFirstWord()
    {
        const QList<TranscriptSegment> lines = groupSegments(
            makeWords({QStringLiteral("hello"), QStringLiteral("world."), QStringLiteral("next")}));
        QCOMPARE(textsOf(lines), QStringList({QStringLiteral("hello world."), QStringLiteral("next")}));
        QCOMPARE(lines[0].timestamp, 1.0);
        QCOMPARE(lines[1].timestamp, 2.0);
    }

    void aLineEndsAtFourCharactersAndNoOthers_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<qsizetype>("lineCount");
        const auto add = [](const char *name, const char *word, qsizetype count) {
            QTest::newRow(name) << QString::fromUtf8(word) << count;
        };
        add("full stop", "end.", 2);
        add("question mark", "end?", 2);
        add("exclamation mark", "end!", 2);
        add("colon", "end:", 2);
        add("abbreviation", "Dr.", 2);
        add("mark alone", ".", 2);
        add("comma", "end,", 1);
        add("semicolon", "end;", 1);
        add("ellipsis character", "end…", 1);
        add("quotation after the stop", "end.\"", 1);
        add("stop within", "3.5", 1);
    }

    void aLineEndsAtFourCharactersAndNoOthers()
    {
        QFETCH(QString, word);
        QFETCH(qsizetype, lineCount);
        QCOMPARE(groupSegments(makeWords({word, QStringLiteral("next")})).size(), lineCount);
    }

    void theSixteenthWordBeginsALine()
    {
        const QList<TranscriptSegment> words = makeWords(numbered(16));
        const QList<TranscriptSegment> lines = groupSegments(words);
        QCOMPARE(textsOf(lines), QStringList({numbered(15).join(u' '), QStringLiteral("w16")}));
        QCOMPARE(lines[1].timestamp, words[15].timestamp);
    }

    void aFifteenthWordWithAFullStopEndsOneLine()
    {
        QStringList texts = numbered(14);
        texts.append(QStringLiteral("end."));
        QCOMPARE(textsOf(groupSegments(makeWords(texts))), QStringList({texts.join(u' ')}));
    }

    void theCountBeginsAnewAfterAFullStop()
    {
        QStringList texts = numbered(3);
        texts[2] = QStringLiteral("end.");
        texts += numbered(15);
        const QStringList lines = textsOf(groupSegments(makeWords(texts)));
        QCOMPARE(lines, QStringList({QStringLiteral("w1 w2 end."), numbered(15).join(u' ')}));
    }

    void punctuationOfItsOwnIsJoinedByABlankToo()
    {
        QCOMPARE(textsOf(groupSegments(makeWords({QStringLiteral("hello"), QStringLiteral(".")}))),
                 QStringList({QStringLiteral("hello .")}));
    }

    void linesHaveIdentifiersOfTheirOwnAndNoSpeaker()
    {
        QList<TranscriptSegment> words = makeWords(numbered(31));
        QSet<QUuid> identifiers;
        for (TranscriptSegment &word : words) {
            word.speaker = QStringLiteral("somebody");
            identifiers.insert(word.id);
        }
        for (const TranscriptSegment &line : groupSegments(words)) {
            QVERIFY(!line.speaker.has_value());
            QVERIFY(!identifiers.contains(line.id));
            identifiers.insert(line.id);
        }
        QCOMPARE(identifiers.size(), 31 + 3);
    }
};

QTEST_GUILESS_MAIN(SegmentGroupingTest)
#include "SegmentGroupingTest.moc"
