#include "platform/Formatting.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <cstdio>

namespace talvenor {

namespace {

const QString narrowSpace = QStringLiteral("\u202F"); // before AM and PM

/// What the child processes do: print what an instant or a size looks like in their surroundings.
int childMain(const QString &what, qint64 number)
{
    const QString text = what == u"size"    ? formatByteCount(number)
                         : what == u"style" ? formatMediumDateShortTime(QDateTime::fromSecsSinceEpoch(number))
                                            : formatDatePattern(QDateTime::fromSecsSinceEpoch(number), what);
    std::fputs(text.toUtf8().constData(), stdout);
    return 0;
}

using Variables = QList<std::pair<QString, QString>>;

QString inSurroundings(const Variables &variables, const QString &what, qint64 number)
{
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"LANG", "LC_ALL", "LC_TIME", "LC_NUMERIC", "LANGUAGE"})
        environment.remove(QString::fromLatin1(name));
    environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
    for (const auto &[name, value] : variables)
        environment.insert(name, value);
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--child"), what, QString::number(number)});
    if (!child.waitForFinished(30'000) || child.exitStatus() != QProcess::NormalExit)
        return QStringLiteral("the child failed");
    return QString::fromUtf8(child.readAllStandardOutput());
}

/// The ninth of March 2026, 15:05:07 in Greenwich, and the ninth of July at the same time.
constexpr qint64 inWinter = 1773068707;
constexpr qint64 inSummer = 1783609507;

} // namespace

class FormattingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void datesFollowTheLocaleForDates_data();
    void datesFollowTheLocaleForDates();
    void datesAreInTheLocalZone_data();
    void datesAreInTheLocalZone();
    void aChangeOfZoneIsSeenAtOnce();
    void patternsDoNotDependOnTheLocale_data();
    void patternsDoNotDependOnTheLocale();
    void sizesAreRoundedWithADecimalUnit_data();
    void sizesAreRoundedWithADecimalUnit();
    void sizesFollowTheLocale();
};

void FormattingTest::datesFollowTheLocaleForDates_data()
{
    QTest::addColumn<Variables>("variables");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name,
                        std::initializer_list<std::pair<const char *, const char *>> variables,
                        const QString &text) {
        Variables list;
        for (const auto &[variable, value] : variables)
            list.append({QString::fromLatin1(variable), QString::fromLatin1(value)});
        QTest::newRow(name) << list << text;
    };
    const QString german = QStringLiteral("09.03.2026, 15:05");
    const QString american = QStringLiteral("Mar 9, 2026, 3:05") + narrowSpace + QStringLiteral("PM");
    row("German", {{"LANG", "de_DE.UTF-8"}}, german);
    row("American", {{"LANG", "en_US.UTF-8"}}, american);
    row("British", {{"LANG", "en_GB.UTF-8"}}, QStringLiteral("9 Mar 2026, 15:05"));
    row("French", {{"LANG", "fr_FR@euro"}}, QStringLiteral("9 mars 2026, 15:05"));
    row("Swedish", {{"LANG", "sv_SE"}}, QStringLiteral("9 mars 2026 15:05"));
    row("Japanese", {{"LANG", "ja_JP.UTF-8"}}, QStringLiteral("2026/03/09 15:05"));
    row("dates in German only", {{"LANG", "en_US.UTF-8"}, {"LC_TIME", "de_DE.UTF-8"}}, german);
    row("numbers in German only", {{"LANG", "en_US.UTF-8"}, {"LC_NUMERIC", "de_DE.UTF-8"}}, american);
    row("everything in German", {{"LANG", "fr_FR"}, {"LC_TIME", "en_US"}, {"LC_ALL", "de_DE.UTF-8"}}, german);
    row("an empty variable", {{"LC_ALL", ""}, {"LANG", "de_DE.UTF-8"}}, german);
    const QString plain = QStringLiteral("Mar 9, 2026, 3:05") + narrowSpace + QStringLiteral("PM");
    row("none", {}, plain);
    row("C", {{"LC_ALL", "C"}}, plain);
    row("C in UTF-8", {{"LC_ALL", "C.UTF-8"}}, plain);
    row("POSIX", {{"LC_ALL", "POSIX"}}, plain);
}

void FormattingTest::datesFollowTheLocaleForDates()
{
    QFETCH(Variables, variables);
    QTEST(inSurroundings(variables, QStringLiteral("style"), inWinter), "text");
}

void FormattingTest::datesAreInTheLocalZone_data()
{
    QTest::addColumn<QString>("zone");
    QTest::addColumn<QString>("winter");
    QTest::addColumn<QString>("summer");
    QTest::newRow("Berlin") << QStringLiteral("Europe/Berlin") << QStringLiteral("09.03.2026, 16:05")
                            << QStringLiteral("09.07.2026, 17:05");
    QTest::newRow("Kathmandu") << QStringLiteral("Asia/Kathmandu") << QStringLiteral("09.03.2026, 20:50")
                               << QStringLiteral("09.07.2026, 20:50");
    QTest::newRow("beyond midnight") << QStringLiteral("Pacific/Auckland")
                                     << QStringLiteral("10.03.2026, 04:05")
                                     << QStringLiteral("10.07.2026, 03:05");
    QTest::newRow("a rule instead of a name")
        << QStringLiteral("NRM-2SUM,M3.5.0,M10.5.0/3") << QStringLiteral("09.03.2026, 17:05")
        << QStringLiteral("09.07.2026, 18:05");
    QTest::newRow("nonsense") << QStringLiteral("Nowhere/Land") << QStringLiteral("09.03.2026, 15:05")
                              << QStringLiteral("09.07.2026, 15:05");
}

void FormattingTest::datesAreInTheLocalZone()
{
    QFETCH(QString, zone);
    const Variables variables{{QStringLiteral("LANG"), QStringLiteral("de_DE.UTF-8")},
                              {QStringLiteral("TZ"), zone}};
    QTEST(inSurroundings(variables, QStringLiteral("style"), inWinter), "winter");
    QTEST(inSurroundings(variables, QStringLiteral("style"), inSummer), "summer");
    const QString pattern = QStringLiteral("dd.MM.yyyy, HH:mm");
    QTEST(inSurroundings(variables, pattern, inSummer), "summer");
}

void FormattingTest::aChangeOfZoneIsSeenAtOnce()
{
    const QByteArray zone = qgetenv("TZ");
    const QDateTime instant = QDateTime::fromSecsSinceEpoch(inSummer, Qt::UTC);
    QStringList texts;
    for (const char *name : {"Europe/Berlin", "America/New_York", "UTC"}) {
        qputenv("TZ", name);
        texts.append(formatDatePattern(instant, QStringLiteral("HH:mm")));
    }
    qputenv("TZ", zone);
    QCOMPARE(texts.join(u' '), QStringLiteral("17:05 11:05 15:05"));
}

void FormattingTest::patternsDoNotDependOnTheLocale_data()
{
    QTest::addColumn<QString>("locale");
    for (const char *locale : {"C.UTF-8", "de_DE.UTF-8", "ar_EG.UTF-8", "th_TH.UTF-8", "fa_IR.UTF-8"})
        QTest::newRow(locale) << QString::fromLatin1(locale);
}

void FormattingTest::patternsDoNotDependOnTheLocale()
{
    QFETCH(QString, locale);
    const Variables variables{{QStringLiteral("LC_ALL"), locale}};
    QCOMPARE(inSurroundings(variables, QStringLiteral("dd.MM.yyyy HH:mm"), inWinter),
             QStringLiteral("09.03.2026 15:05"));
    QCOMPARE(inSurroundings(variables, QStringLiteral("yyyy-MM-dd_HH-mm-ss"), inWinter),
             QStringLiteral("2026-03-09_15-05-07"));
}

void FormattingTest::sizesAreRoundedWithADecimalUnit_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("text");
    const auto row = [](qint64 bytes, const char *text) {
        QTest::addRow("%lld", static_cast<long long>(bytes)) << bytes << QString::fromLatin1(text);
    };
    row(0, "0 bytes");
    row(1, "1 bytes");
    row(999, "999 bytes");
    row(1000, "1 kB");
    row(1499, "1 kB");
    row(1500, "2 kB");
    row(48'123, "48 kB");
    row(999'499, "999 kB");
    row(999'500, "1.0 MB");
    row(1'000'000, "1.0 MB");
    row(1'249'999, "1.2 MB");
    row(47'123'456, "47.1 MB");
    row(999'949'999, "999.9 MB");
    row(999'950'000, "1.00 GB");
    row(3'141'592'653, "3.14 GB");
    row(2'500'000'000'000, "2.50 TB");
    row(std::numeric_limits<qint64>::max(), "9.22 EB");
}

void FormattingTest::sizesAreRoundedWithADecimalUnit()
{
    QFETCH(qint64, bytes);
    QTEST(formatByteCount(bytes), "text");
}

void FormattingTest::sizesFollowTheLocale()
{
    const auto size = [](const char *locale, qint64 bytes) {
        return inSurroundings({{QStringLiteral("LANG"), QString::fromLatin1(locale)}}, QStringLiteral("size"),
                              bytes);
    };
    QCOMPARE(size("de_DE.UTF-8", 47'123'456), QStringLiteral("47,1 MB"));
    QCOMPARE(size("en_US.UTF-8", 47'123'456), QStringLiteral("47.1 MB"));
    QCOMPARE(size("fr_FR.UTF-8", 47'123'456), QStringLiteral("47,1 Mo"));
}

} // namespace talvenor

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--child")
        return talvenor::childMain(arguments.value(2), arguments.value(3).toLongLong());
    talvenor::FormattingTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "FormattingTest.moc"
