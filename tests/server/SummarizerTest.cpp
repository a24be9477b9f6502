#include "server/summaries/CueFinder.h"
#include "server/summaries/ExtractiveSummarizer.h"
#include "server/summaries/NameFinder.h"
#include "server/summaries/TextRank.h"
#include "server/summaries/Transcript.h"

#include <QTest>

#include <cmath>

using namespace talvenor::server;

namespace {

constexpr const char *englishHeadings[] = {"## Participants", "## Summary", "## Key Points", "## Decisions",
                                           "## Next Steps / Action Items"};
constexpr const char *germanHeadings[] = {"## Teilnehmer", "## Zusammenfassung", "## Wichtige Punkte",
                                          "## Entscheidungen", "## Nächste Schritte / Action Items"};

QString summaryOf(const QString &transcript, Language language)
{
    ExtractiveSummarizer summarizer;
    return QString::fromStdString(summarizer.summarize(transcript.toStdString(), language));
}

/// What stands under a heading, as lines; empty if the heading is missing or stands twice.
QStringList sectionOf(const QString &summary, const char *heading)
{
    QStringList lines;
    bool inside = false;
    int found = 0;
    for (const QString &line : summary.split(QLatin1Char('\n'))) {
        if (line.startsWith(QStringLiteral("## ")) || line.startsWith(QStringLiteral("PARTICIPANTS:"))) {
            inside = line == QString::fromUtf8(heading);
            found += inside ? 1 : 0;
        } else if (inside && !line.isEmpty()) {
            lines.append(line);
        }
    }
    return found == 1 ? lines : QStringList();
}

QString participantsLine(const QString &summary)
{
    return summary.split(QLatin1Char('\n')).constLast();
}

/// Why a summary does not have the required shape; empty if it has.
QString flawOf(const QString &summary, Language language)
{
    qsizetype position = -1;
    for (const char *heading : language == Language::german ? germanHeadings : englishHeadings) {
        const QString line = QString::fromUtf8(heading) + QLatin1Char('\n');
        const qsizetype next = summary.startsWith(line) ? 0 : summary.indexOf(QLatin1Char('\n') + line);
        if (next < 0 || next <= position)
            return QStringLiteral("missing or out of order: ") + line;
        position = next == 0 ? 0 : next;
        if (sectionOf(summary, heading).isEmpty())
            return QStringLiteral("empty: ") + line;
    }
    if (!participantsLine(summary).startsWith(QStringLiteral("PARTICIPANTS:")))
        return QStringLiteral("the last line is not the participants'");
    if (summary.count(QStringLiteral("\nPARTICIPANTS:")) != 1)
        return QStringLiteral("more than one line of participants");
    return {};
}

const QString englishMeeting = QStringLiteral(
    "[00:01] [Alice] Good morning everybody, let us talk about the release of the billing server.\n"
    "[00:09] [Bob] The billing server is ready but the database migration is still slow.\n"
    "[00:17] [Alice] How slow is the database migration on the billing server?\n"
    "[00:24] [Bob] The database migration takes two hours for the largest customer.\n"
    "[00:31] [Alice] I like the new coffee machine.\n"
    "[00:40] [Bob] We agreed to move the release to Tuesday.\n"
    "[00:48] [Alice] Bob will measure the migration again by Monday.\n"
    "[00:55] [Bob] I'll write to the largest customer.\n");

} // namespace

/// Summaries made of the transcript's own sentences.
class SummarizerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySummaryHasItsShape_data()
    {
        QTest::addColumn<QString>("transcript");
        QTest::newRow("meeting") << englishMeeting;
        QTest::newRow("nothing") << QString();
        QTest::newRow("blank") << QStringLiteral(" \n\t\n  ");
        QTest::newRow("times only") << QStringLiteral("[00:01] \n[00:02] \n");
        QTest::newRow("one word") << QStringLiteral("[00:01] yes");
        QTest::newRow("one letter") << QStringLiteral("a");
        QTest::newRow("punctuation") << QStringLiteral("... !!! ???");
        QTest::newRow("speaker without words") << QStringLiteral("[00:01] [Anna] ");
        QTest::newRow("brackets") << QStringLiteral("[[[[\n]]]]\n[00:01\n[00:01] [\n[:] x [y]");
        QTest::newRow("line of participants")
            << QStringLiteral("PARTICIPANTS: Eve, Mallory and some others are here today.");
        QTest::newRow("headings") << QStringLiteral(
            "## Decisions are the matter of this sentence.\n## Summary of it.");
        QTest::newRow("carriage returns")
            << QStringLiteral("[00:01] we decided to go\r\n[00:02] by friday\r\n");
        QTest::newRow("one long line") << QStringLiteral("word and other words ").repeated(5000);
        QTest::newRow("one long word") << QString(200'000, QLatin1Char('w'));
        QTest::newRow("no spaces")
            << QStringLiteral("今日は会議を始めます。次の議題は予算です。").repeated(50);
        QTest::newRow("emoji") << QStringLiteral("😀 😀 😀 😀 😀");
        QTest::newRow("the same line")
            << QStringLiteral("[00:01] we will do the same thing again by friday\n").repeated(2000);
        QTest::newRow("twenty thousand sentences")
            << QStringLiteral("Bob will go. We decided it. ").repeated(10'000);
        QTest::newRow("full stops") << QStringLiteral("a. ").repeated(20'000);
    }

    void everySummaryHasItsShape()
    {
        QFETCH(QString, transcript);
        for (const Language language : {Language::english, Language::german}) {
            const QString summary = summaryOf(transcript, language);
            QVERIFY2(flawOf(summary, language).isEmpty(),
                     qPrintable(flawOf(summary, language) + summary.left(2000)));
            QCOMPARE(summary, summaryOf(transcript, language));
        }
    }

    void whatIsNotRecognisedIsSaid()
    {
        const QString english =
            summaryOf(QStringLiteral("hello there my friends of the sea"), Language::english);
        QCOMPARE(sectionOf(english, "## Decisions"), QStringList(QStringLiteral("- None recognised.")));
        QCOMPARE(sectionOf(english, "## Next Steps / Action Items"),
                 QStringList(QStringLiteral("- None recognised.")));
        QCOMPARE(participantsLine(english), QStringLiteral("PARTICIPANTS: Speaker 1"));
        const QString german =
            summaryOf(QStringLiteral("guten tag ihr lieben leute am meer"), Language::german);
        QCOMPARE(sectionOf(german, "## Entscheidungen"), QStringList(QStringLiteral("- Keine erkannt.")));
        QCOMPARE(participantsLine(german), QStringLiteral("PARTICIPANTS: Sprecher 1"));
        QCOMPARE(participantsLine(summaryOf(QString(), Language::german)), QStringLiteral("PARTICIPANTS:"));
    }

    void theMatterComesFirst()
    {
        const QString summary = summaryOf(englishMeeting, Language::english);
        const QString text = sectionOf(summary, "## Summary").join(QLatin1Char(' '));
        QVERIFY2(text.contains(QStringLiteral("billing server")), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("database migration")), qPrintable(text));
        QVERIFY2(!text.contains(QStringLiteral("coffee")), qPrintable(text));
        const QStringList points = sectionOf(summary, "## Key Points");
        QVERIFY(!points.isEmpty());
        for (const QString &point : points) {
            QVERIFY(point.startsWith(QStringLiteral("- ")));
            QVERIFY2(!text.contains(point.mid(2)), qPrintable(point)); // said once
        }
        QCOMPARE(sectionOf(summary, "## Decisions"),
                 QStringList(QStringLiteral("- We agreed to move the release to Tuesday.")));
        QCOMPARE(sectionOf(summary, "## Next Steps / Action Items"),
                 (QStringList{QStringLiteral("- Bob: Bob will measure the migration again by Monday."),
                              QStringLiteral("- Bob: I'll write to the largest customer.")}));
        QCOMPARE(participantsLine(summary), QStringLiteral("PARTICIPANTS: Alice, Bob"));
    }

    void aShortMeetingHasKeyPointsToo()
    {
        const QString summary =
            summaryOf(QStringLiteral("[00:01] the server needs a new disk\n"
                                     "[00:05] the printer on the first floor is broken\n"),
                      Language::english);
        QCOMPARE(sectionOf(summary, "## Summary").size(), 1);
        QVERIFY(sectionOf(summary, "## Key Points") != QStringList(QStringLiteral("- None recognised.")));
    }

    void aGermanMeetingIsUnderstood()
    {
        const QString summary = summaryOf(
            QStringLiteral("[00:01] Guten Morgen, mein Name ist Änne Groß und ich leite das Projekt.\n"
                           "[00:05] Hier ist Jörg vom Vertrieb. Danke, Änne.\n"
                           "[00:12] Wir haben beschlossen, das Angebot am Freitag zu verschicken.\n"
                           "[00:20] Jörg wird das Angebot bis Donnerstag prüfen.\n"
                           "[00:25] Das Angebot für den Kunden enthält drei Teile.\n"),
            Language::german);
        QCOMPARE(participantsLine(summary), QStringLiteral("PARTICIPANTS: Änne Groß, Jörg"));
        QCOMPARE(sectionOf(summary, "## Teilnehmer"),
                 (QStringList{QStringLiteral("- Änne Groß"), QStringLiteral("- Jörg")}));
        QCOMPARE(
            sectionOf(summary, "## Entscheidungen"),
            QStringList(QStringLiteral("- Wir haben beschlossen, das Angebot am Freitag zu verschicken.")));
        QVERIFY(sectionOf(summary, "## Nächste Schritte / Action Items")
                    .contains(QStringLiteral("- Jörg: Jörg wird das Angebot bis Donnerstag prüfen.")));
    }

    void lowerCaseWithoutFullStopsIsEnough()
    {
        const QString summary =
            summaryOf(QStringLiteral("[00:01] hello everyone my name is alice and this meeting is about\n"
                                     "[00:07] the new server for the customers in the north this is\n"
                                     "[00:12] bob speaking the server needs more memory for the customers\n"
                                     "[00:19] we decided to buy the memory for the server on friday\n"
                                     "[00:25] bob will order the memory by monday thanks bob\n"),
                      Language::english);
        QCOMPARE(flawOf(summary, Language::english), QString());
        QCOMPARE(participantsLine(summary), QStringLiteral("PARTICIPANTS: Alice, Bob"));
        QCOMPARE(sectionOf(summary, "## Decisions"),
                 QStringList(QStringLiteral("- We decided to buy the memory for the server on Friday.")));
        QCOMPARE(sectionOf(summary, "## Next Steps / Action Items"),
                 QStringList(QStringLiteral("- Bob: Bob will order the memory by Monday thanks Bob.")));
    }

    void aCutPhraseGoesOnInTheNextLine()
    {
        const QString summary =
            summaryOf(QStringLiteral("[00:01] so after a long talk with all of you today we decided\n"
                                     "[00:07] to close the old office\n"),
                      Language::english);
        const QStringList decisions = sectionOf(summary, "## Decisions");
        QCOMPARE(decisions.size(), 1);
        QVERIFY2(decisions.constFirst().contains(QStringLiteral("we decided to close the old office")),
                 qPrintable(decisions.constFirst()));
    }

    void namesAreFound_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("names");
        const auto row = [](const char *text, const char *names) {
            QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(names);
        };
        row("my name is alice", "Alice");
        row("MY NAME IS ALICE", "ALICE");
        row("my name is talvinder", "Talvinder");
        row("i am bob and i'm late", "Bob");
        row("i'm bob", "Bob");
        row("this is bob from sales", "Bob");
        row("this is talvinder speaking", "Talvinder");
        row("i am talvinder from sales", "Talvinder");
        row("this is feedback from sales", "");
        row("i am calling from sales", "");
        row("hier ist talvinder am apparat", "Talvinder");
        row("thanks carol", "Carol");
        row("Thank you, Carol.", "Carol");
        row("ich bin anna und hier ist jens", "Anna, Jens");
        row("mein name ist anna", "Anna");
        row("ich heiße svetlana", "Svetlana");
        row("danke peter", "Peter");
        row("Ich bin Anna-Lena Weber.", "Anna-Lena Weber");
        row("Ich bin die Anna.", "Anna");
        row("This is Bob. This is Bob Miller.", "Bob Miller");
        row("I am Bob Miller. Thanks Bob.", "Bob Miller");
        row("i am going to the server", "");
        row("i am tired and this is great", "");
        row("this is a test", "");
        row("this is the plan", "");
        row("thanks everyone", "");
        row("thanks a lot", "");
        row("thank you very much", "");
        row("danke schön", "");
        row("danke für alles", "");
        row("ich bin dabei und ich bin fertig", "");
        row("hier ist es schön", "");
        row("Ich bin Entwickler. Ich bin Projektleiterin.", "");
        row("Danke Leute. Hier ist Platz.", "");
        row("This is Monday. I am German.", "");
        row("my name is", "");
        row("i am", "");
        row("I am. Bob is not.", "");
        row("[00:01] [Müller, Anna] hallo", "Müller Anna");
        row("[00:01] [anna] hallo\n[00:02] [Anna] ja\n[00:03] [Bert] nein", "anna, Bert");
    }

    void namesAreFound()
    {
        QFETCH(QString, text);
        QFETCH(QString, names);
        QStringList found;
        for (const std::string &name : namesIn(parseTranscript(text.toStdString())))
            found.append(QString::fromStdString(name));
        QCOMPARE(found.join(QStringLiteral(", ")), names);
    }

    void noTranscriptMakesAnEndlessList()
    {
        QString transcript;
        for (int index = 0; index < 500; ++index)
            transcript += QStringLiteral("[00:01] [Person %1] hello\n").arg(index);
        QCOMPARE(namesIn(parseTranscript(transcript.toStdString())).size(), std::size_t{50});
    }

    void linesAreReadAsTheyAreWritten()
    {
        const Transcript transcript =
            parseTranscript("[62:05] [Anna] first part of\n"
                            "[62:09] [Anna] a sentence. Second one, by Dr. Who on 3. May!\n"
                            "[1:02:11] [Bert] third\n"
                            "plain [text] here.\n");
        QCOMPARE(transcript.sentences.size(), std::size_t{4});
        QCOMPARE(transcript.sentences[0].text, std::string("first part of a sentence."));
        QCOMPARE(transcript.sentences[0].speaker, std::string("Anna"));
        QCOMPARE(transcript.sentences[1].text, std::string("Second one, by Dr. Who on 3. May!"));
        QCOMPARE(transcript.sentences[2].text, std::string("third"));
        QCOMPARE(transcript.sentences[2].speaker, std::string("Bert"));
        QCOMPARE(transcript.sentences[3].text, std::string("plain [text] here."));
        QCOMPARE(transcript.sentences[3].speaker, std::string());
    }

    void wordsAreComparedInLowerCaseOfAllLetters()
    {
        QCOMPARE(lowerCase("ÄÖÜẞ ÉČŽ ΑΩ ЖЯ I'm"), std::string("äöüß éčž αω жя i'm"));
        QCOMPARE(capitalised("änne-lena"), std::string("Änne-Lena"));
        const auto words = wordsOf("It\u2019s the state-of-the-art, isn't it?");
        QCOMPARE(words.size(), std::size_t{5});
        QCOMPARE(words[0].lower, std::string("it's"));
        QCOMPARE(words[2].lower, std::string("state-of-the-art"));
    }

    void textRankWeighsAsPublished()
    {
        // Three sentences of two words of meaning each: the middle one shares one word with each of the
        // others.
        const Transcript transcript = parseTranscript("alpha beta\nbeta gamma\ngamma delta");
        const std::vector<double> scores = textRank(transcript.sentences);
        QCOMPARE(scores.size(), std::size_t{3});
        // Equal weights on both edges, so s = 0.15 + 0.85 m / 2 and m = 0.15 + 2 * 0.85 s.
        const double middle = (0.15 + 2 * 0.85 * 0.15) / (1 - 0.85 * 0.85);
        const double side = 0.15 + 0.85 * middle / 2;
        QVERIFY(std::abs(scores[0] - side) < 1e-3);
        QVERIFY(std::abs(scores[1] - middle) < 1e-3);
        QVERIFY(std::abs(scores[2] - side) < 1e-3);
    }

    void aLongTranscriptIsRankedAsAWhole()
    {
        std::string text;
        for (int index = 0; index < 5000; ++index)
            text += "filler" + std::to_string(index) + " talk" + std::to_string(index) + "\n";
        for (int index = 0; index < 5; ++index)
            text += "budget server release topic" + std::to_string(index) + "\n";
        const Transcript transcript = parseTranscript(text);
        const std::vector<double> scores = textRank(transcript.sentences);
        const auto best = std::max_element(scores.begin(), scores.end()) - scores.begin();
        QVERIFY(best >= 5000);
    }

    void decisionsNeedMoreThanAWord_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("decision");
        QTest::addColumn<bool>("task");
        const auto row = [](const char *text, bool decision, bool task) {
            QTest::newRow(text) << QString::fromUtf8(text) << decision << task;
        };
        row("we decided to stay", true, false);
        row("we have not decided anything", false, false);
        row("We agreed on the budget.", true, false);
        row("the disagreed ones", false, false);
        row("wir haben uns noch nicht entschieden", false, false);
        row("Wir haben beschlossen, zu bleiben.", true, false);
        row("please send it by friday", false, true);
        row("I will call him", false, true);
        row("bis Freitag ist es fertig", false, true);
        row("Ich kümmere mich um den Server.", false, true);
        row("good will is a noun", false, false);
        row("es wird kalt", false, false);
        row("we decided that it must be done by friday", true, true);
    }

    void decisionsNeedMoreThanAWord()
    {
        QFETCH(QString, text);
        QFETCH(bool, decision);
        QFETCH(bool, task);
        const Transcript transcript = parseTranscript(text.toStdString());
        QCOMPARE(transcript.sentences.size(), std::size_t{1});
        QCOMPARE(isDecision(transcript.sentences[0]), decision);
        QCOMPARE(TaskFinder({"Anna"}).taskIn(transcript.sentences[0]).has_value(), task);
    }
};

QTEST_GUILESS_MAIN(SummarizerTest)
#include "SummarizerTest.moc"
