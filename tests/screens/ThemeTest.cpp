#include "RenderedScene.h"

#include "platform/Platform.h"

#include <QGuiApplication>
#include <QPalette>
#include <QTest>

#include <cmath>

using namespace talvenor;
using test::RenderedScene;

namespace {

/// The relative luminance of WCAG 2.
double luminance(const QColor &color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

QColor translucent(int value, double opacity)
{
    QColor color(value, value, value);
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

QColor purpleAt(double opacity)
{
    QColor color(107, 92, 232);
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

} // namespace

/// The colours, sizes and schemes that all screens share.
class ThemeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theAccentsAreTheirNumbers()
    {
        const RenderedScene scene("Item {}");
        QCOMPARE(scene.themeColor("purple"), QColor(107, 92, 232));
        QCOMPARE(scene.themeColor("blue"), QColor(10, 133, 227));
        QCOMPARE(scene.themeColor("recordingStart"), QColor(255, 59, 48));
        QCOMPARE(scene.themeColor("recordingEnd"), QColor(232, 31, 99));
    }

    void surfacesFollowTheScheme_data()
    {
        QTest::addColumn<QByteArray>("surface");
        QTest::addColumn<QColor>("dark");
        QTest::addColumn<QColor>("light");
        const QColor white(255, 255, 255);
        QTest::newRow("at rest") << QByteArray("surface") << translucent(255, 0.04) << translucent(0, 0.03);
        QTest::newRow("selected") << QByteArray("selectedSurface") << translucent(255, 0.08)
                                  << purpleAt(0.08);
        QTest::newRow("card") << QByteArray("cardFill") << translucent(255, 0.04) << white;
        QTest::newRow("card border") << QByteArray("cardBorder") << translucent(255, 0.06)
                                     << translucent(0, 0.04);
        QTest::newRow("card shadow") << QByteArray("cardShadow") << translucent(0, 0) << translucent(0, 0.04);
        QTest::newRow("player bar") << QByteArray("playerBar") << translucent(255, 0.02)
                                    << translucent(0, 0.02);
        QTest::newRow("field") << QByteArray("fieldFill") << translucent(255, 0.06) << translucent(0, 0.04);
    }

    void surfacesFollowTheScheme()
    {
        QFETCH(QByteArray, surface);
        QFETCH(QColor, dark);
        QFETCH(QColor, light);
        RenderedScene scene("Item {}");
        TALVENOR_COMPARE_COLOR(scene.themeColor(surface.constData()), light, 1);
        scene.setScheme(ColorScheme::dark);
        TALVENOR_COMPARE_COLOR(scene.themeColor(surface.constData()), dark, 1);
    }

    void textSizesAreTheGivenOnesTimesOneFactor()
    {
        const RenderedScene scene("Item {}");
        const QList<std::pair<const char *, int>> sizes{
            {"title", 25}, {"title2", 20},      {"title3", 17},  {"headline", 15},
            {"body", 15},  {"subheadline", 13}, {"caption", 12}, {"caption2", 12}};
        for (const auto &[name, size] : sizes)
            QVERIFY2(scene.theme().property(name).toInt() == size, name);
        const QList<std::pair<int, int>> scaled{{10, 12}, {11, 13},   {12, 14},  {13, 15},
                                                {30, 35}, {420, 483}, {660, 759}};
        for (const auto &[given, here] : scaled) {
            int result = 0;
            QVERIFY(QMetaObject::invokeMethod(&scene.theme(), "scaled", Q_RETURN_ARG(int, result),
                                              Q_ARG(int, given)));
            QCOMPARE(result, here);
        }
    }

    void textsCanBeRead_data()
    {
        QTest::addColumn<ColorScheme>("scheme");
        QTest::newRow("light") << ColorScheme::light;
        QTest::newRow("dark") << ColorScheme::dark;
    }

    void textsCanBeRead()
    {
        QFETCH(ColorScheme, scheme);
        RenderedScene scene("Item {}");
        scene.setScheme(scheme);
        const QList<std::pair<const char *, double>> texts{
            {"primary", 7},      {"secondary", 4.5}, {"tertiary", 3},           {"redText", 4.5},
            {"orangeText", 4.5}, {"greenText", 4.5}, {"systemPurpleText", 4.5}, {"accentText", 4.5}};
        for (const char *const ground : {"windowBackground", "sheet"}) {
            for (const auto &[name, least] : texts) {
                const double found = contrast(scene.themeColor(name), scene.themeColor(ground));
                QVERIFY2(found >= least, qPrintable(QStringLiteral("%1 on %2: %3")
                                                        .arg(QLatin1String(name), QLatin1String(ground))
                                                        .arg(found)));
            }
        }
    }

    void aChangeOfTheSchemeRepaintsWhatIsShown()
    {
        RenderedScene scene("Item { StaticText { x: 10; y: 10; text: '█████'; font.pixelSize: 40 }\n"
                            "GradientFill { x: 10; y: 100; width: 40; height: 40; startColor: Theme.red } }");
        TALVENOR_COMPARE_COLOR(scene.colorAt({300, 200}), QColor(0xf5, 0xf5, 0xf7));
        TALVENOR_COMPARE_COLOR(scene.colorAt({40, 38}), QColor(0x1d, 0x1d, 0x1f));
        TALVENOR_COMPARE_COLOR(scene.colorAt({30, 120}), QColor(0xf5, 0x34, 0x2a));
        scene.setScheme(ColorScheme::dark);
        TALVENOR_COMPARE_COLOR(scene.colorAt({300, 200}), QColor(0x1e, 0x1e, 0x20));
        TALVENOR_COMPARE_COLOR(scene.colorAt({40, 38}), QColor(0xf2, 0xf2, 0xf5));
        TALVENOR_COMPARE_COLOR(scene.colorAt({30, 120}), QColor(0xff, 0x4a, 0x40));
    }

    void withoutAPreferenceThePaletteDecidesAndIsFollowed()
    {
        const QPalette usual = QGuiApplication::palette();
        {
            RenderedScene scene("Item {}");
            scene.setScheme(std::nullopt);
            QPalette palette = usual;
            palette.setColor(QPalette::Window, QColor(40, 40, 44));
            QGuiApplication::setPalette(palette);
            QTRY_VERIFY(scene.theme().property("isDark").toBool());
            palette.setColor(QPalette::Window, QColor(240, 240, 240));
            QGuiApplication::setPalette(palette);
            QTRY_VERIFY(!scene.theme().property("isDark").toBool());
            // What the desktop prefers counts for more.
            scene.setScheme(ColorScheme::dark);
            QVERIFY(scene.theme().property("isDark").toBool());
        }
        QGuiApplication::setPalette(usual);
    }

    void aLineHoldsAnyText()
    {
        const RenderedScene scene("Item { function line(text) { return Theme.oneLine(text) } }");
        const auto line = [&scene](const QString &text) {
            QVariant result;
            QMetaObject::invokeMethod(&scene.root(), "line", Q_RETURN_ARG(QVariant, result),
                                      Q_ARG(QVariant, text));
            return result.toString();
        };
        QCOMPARE(line(QStringLiteral("a\r\nb\tc\u2028d\u0085e")), QStringLiteral("a b c d e"));
        QCOMPARE(line(QStringLiteral("Grüße 🎙 مرحبا")), QStringLiteral("Grüße 🎙 مرحبا"));
        QVERIFY(line(QString(3'000'000, u'x')).size() < 1100);
    }
};

TALVENOR_SCREEN_TEST_MAIN(ThemeTest)
#include "ThemeTest.moc"
