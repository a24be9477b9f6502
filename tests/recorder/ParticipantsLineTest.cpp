#include "recorder/ParticipantsLine.h"

#include <QTest>

using namespace talvenor;

/// How the names are taken out of a summary.
class ParticipantsLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLastLineNamesTheParticipantsAndIsTakenOut()
    {
        const ParsedSummary parsed =
            parseParticipants(QStringLiteral("## Summary\nAll fine.\n\nPARTICIPANTS: Anna, Ben"));
        QCOMPARE(parsed.cleaned, QStringLiteral("## Summary\nAll fine."));
        QCOMPARE(parsed.names, QStringList({QStringLiteral("Anna"), QStringLiteral("Ben")}));
    }

    void withoutTheLineNothingChanges()
    {
        const ParsedSummary parsed =
            parseParticipants(QStringLiteral("## Participants\n- Anna\n  indented  \nend"));
        QCOMPARE(parsed.cleaned, QStringLiteral("## Participants\n- Anna\n  indented  \nend"));
        QVERIFY(parsed.names.isEmpty());
    }

    void theMarkerIsFoundInAnyCaseAndBehindBlanks()
    {
        const ParsedSummary parsed =
            parseParticipants(QStringLiteral("a\n \t\u00a0participants:Jürgen MÜLLER\nb"));
        QCOMPARE(parsed.cleaned, QStringLiteral("a\nb"));
        QCOMPARE(parsed.names, QStringList({QStringLiteral("Jürgen MÜLLER")}));
    }

    void aLineInTheMiddleCountsLikeALastLine()
    {
        const ParsedSummary parsed = parseParticipants(QStringLiteral("first\nPARTICIPANTS: Anna\nlast"));
        QCOMPARE(parsed.cleaned, QStringLiteral("first\nlast"));
        QCOMPARE(parsed.names, QStringList({QStringLiteral("Anna")}));
    }

    void theLastOfSeveralLinesDecidesAndAllAreTakenOut()
    {
        const ParsedSummary parsed =
            parseParticipants(QStringLiteral("PARTICIPANTS: Anna\ntext\nParticipants: Ben, Carl"));
        QCOMPARE(parsed.cleaned, QStringLiteral("text"));
        QCOMPARE(parsed.names, QStringList({QStringLiteral("Ben"), QStringLiteral("Carl")}));
    }

    void blanksAndCommasAloneAreNoNamesAndReplaceEarlierOnes()
    {
        const ParsedSummary parsed =
            parseParticipants(QStringLiteral("PARTICIPANTS: Anna\ntext\nPARTICIPANTS: , \t ,,"));
        QCOMPARE(parsed.cleaned, QStringLiteral("text"));
        QVERIFY(parsed.names.isEmpty());
    }

    void nothingButTheLineLeavesAnEmptySummary()
    {
        const ParsedSummary parsed = parseParticipants(QStringLiteral("\n PARTICIPANTS: Anna \n\n"));
        QVERIFY(!parsed.cleaned.isNull());
        QCOMPARE(parsed.cleaned, QString());
        QCOMPARE(parsed.names, QStringList({QStringLiteral("Anna")}));
    }

    void otherLinesAreKeptUntrimmedButTheEndsOfTheWholeAreClean()
    {
        const ParsedSummary parsed =
            parseParticipants(QStringLiteral("\r\n \t\u2003 a  \n  b  \nPARTICIPANTS:\n\u2028\n "));
        QCOMPARE(parsed.cleaned, QStringLiteral("a  \n  b"));
    }

    void namesAreTrimmedOfBlanksOfEveryKind()
    {
        const ParsedSummary parsed =
            parseParticipants(QStringLiteral("PARTICIPANTS:\u3000Anna Maria\u00a0,\tBen\t"));
        QCOMPARE(parsed.names, QStringList({QStringLiteral("Anna Maria"), QStringLiteral("Ben")}));
    }

    void aLineShorterThanTheMarkerIsText()
    {
        QCOMPARE(parseParticipants(QStringLiteral("PARTICIPANTS")).cleaned, QStringLiteral("PARTICIPANTS"));
        QCOMPARE(parseParticipants(QString()).cleaned, QString());
        QVERIFY(!parseParticipants(QString()).cleaned.isNull());
    }
};

QTEST_GUILESS_MAIN(ParticipantsLineTest)
#include "ParticipantsLineTest.moc"
