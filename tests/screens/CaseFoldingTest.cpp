#include "screens/CaseFolding.h"

#include <QTest>

using namespace talvenor;

namespace {

QString foldCase(const QString &text)
{
    return CaseFolding().folded(text);
}

} // namespace

class CaseFoldingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { qunsetenv("LC_ALL"); }

    void textsThatDifferInCaseAloneAreFoldedToOne_data()
    {
        QTest::addColumn<QString>("one");
        QTest::addColumn<QString>("other");
        QTest::addColumn<bool>("areSame");
        QTest::newRow("letters") << u"Meeting"_qs << u"mEETING"_qs << true;
        QTest::newRow("umlauts") << u"ÜBERBLICK"_qs << u"überblick"_qs << true;
        QTest::newRow("sharp s") << u"STRASSE"_qs << u"Straße"_qs << true;
        QTest::newRow("capital sharp s") << u"\u1E9E"_qs << u"ß"_qs << true;
        QTest::newRow("sigma at the end") << u"ΟΔΟΣ"_qs << u"οδος"_qs << true;
        QTest::newRow("beyond the basic plane") << u"\U00010400"_qs << u"\U00010428"_qs << true;
        QTest::newRow("dotted capital i") << u"İ"_qs << u"i\u0307"_qs << true;
        QTest::newRow("an accent is a difference") << u"é"_qs << u"e"_qs << false;
        QTest::newRow("an accent of its own") << u"é"_qs << u"e\u0301"_qs << false;
        QTest::newRow("full width") << u"Ａ"_qs << u"A"_qs << false;
        QTest::newRow("space") << u"a b"_qs << u"ab"_qs << false;
        QTest::newRow("kinds of space") << u" "_qs << u"\u00A0"_qs << false;
    }

    void textsThatDifferInCaseAloneAreFoldedToOne()
    {
        QFETCH(QString, one);
        QFETCH(QString, other);
        QFETCH(bool, areSame);
        QCOMPARE(foldCase(one) == foldCase(other), areSame);
    }

    void aTurkicLocaleKeepsTheDotApart_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<bool>("isTurkic");
        QTest::newRow("Turkish") << QByteArray("tr_TR.UTF-8") << true;
        QTest::newRow("Azerbaijani") << QByteArray("az") << true;
        QTest::newRow("Cypriot, with a modifier") << QByteArray("tr@euro") << true;
        QTest::newRow("English") << QByteArray("en_GB.UTF-8") << false;
        QTest::newRow("a language that begins alike") << QByteArray("trv_TW") << false;
        QTest::newRow("none") << QByteArray("C") << false;
    }

    void aTurkicLocaleKeepsTheDotApart()
    {
        QFETCH(QByteArray, locale);
        QFETCH(bool, isTurkic);
        qputenv("LC_ALL", locale);
        QCOMPARE(foldCase(u"I"_qs) == foldCase(u"i"_qs), !isTurkic);
        QCOMPARE(foldCase(u"I"_qs) == foldCase(u"ı"_qs), isTurkic);
        QCOMPARE(foldCase(u"İ"_qs) == foldCase(u"i"_qs), isTurkic);
        QCOMPARE(foldCase(u"TITLE"_qs).contains(foldCase(u"title"_qs)), !isTurkic);
    }

    void whatIsNoLetterStaysAsItIs_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << QString();
        QTest::newRow("spaces and breaks") << u" \t\n\r "_qs;
        QTest::newRow("zero") << QString(QChar(u'\0')) + u'a';
        QTest::newRow("half of a character") << QString(QChar(0xD83D));
        QTest::newRow("emoji") << u"👩‍💻🎉"_qs;
        QTest::newRow("right to left") << u"פגישה اجتماع"_qs;
    }

    void whatIsNoLetterStaysAsItIs()
    {
        QFETCH(QString, text);
        QCOMPARE(foldCase(text), text);
    }

    void aTextThatGrowsTwofoldAndMoreIsWhole()
    {
        const QString folded = foldCase(QString(500'000, u'ΐ')); // three characters each
        QCOMPARE(folded.size(), 1'500'000);
        QCOMPARE(folded.last(3), foldCase(u"ΐ"_qs));
    }

    void aPartStaysAPart()
    {
        const QString whole = u"Die Straße nach İzmir, ΟΔΟΣ \U00010400"_qs;
        for (qsizetype first = 0; first < whole.size(); ++first) {
            for (qsizetype count = 0; first + count <= whole.size() - 2;
                 ++count) // not into the pair at the end
                QVERIFY(foldCase(whole).contains(foldCase(whole.mid(first, count))));
        }
    }
};

QTEST_GUILESS_MAIN(CaseFoldingTest)
#include "CaseFoldingTest.moc"
