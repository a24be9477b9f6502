#include "SidebarFixture.h"

#include "support/Await.h"

#include <QFont>

#include <cmath>

using namespace talvenor;
using test::RenderedScene;
using test::Sidebar;

namespace {

struct Mark
{
    const char *symbol;
    const char *color;
    double opacity;
};

/// Those of recordingsOfAllMarks().
constexpr Mark marks[] = {{"waveform", "red", 0.12},
                          {"text.bubble", "orange", 0.12},
                          {"sparkles", "systemPurple", 0.12},
                          {"checkmark.circle.fill", "green", 0.12},
                          {"text.badge.checkmark", "blue", 0.12},
                          {"waveform", "secondary", 0.08},
                          {"exclamationmark.triangle.fill", "red", 0.12}};

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

/// The sidebar's own surface, which all of it lies on.
QColor ground(const RenderedScene &scene)
{
    return RenderedScene::over(scene.themeColor("sidebar"), scene.themeColor("windowBackground"));
}

int fontSize(const QQuickItem &text)
{
    return text.property("font").value<QFont>().pixelSize();
}

int fontWeight(const QQuickItem &text)
{
    return text.property("font").value<QFont>().weight();
}

} // namespace

/// Where everything in the sidebar is, and how it looks.
class SidebarLookTest : public QObject
{
    Q_OBJECT

private:
    static void addSchemes()
    {
        QTest::addColumn<ColorScheme>("scheme");
        QTest::newRow("light") << ColorScheme::light;
        QTest::newRow("dark") << ColorScheme::dark;
    }

private Q_SLOTS:
    void everythingStandsAtItsPlace_data()
    {
        QTest::addColumn<int>("width");
        QTest::newRow("narrowest") << 280;
        QTest::newRow("as made") << 300;
        QTest::newRow("wide") << 520;
    }

    void everythingStandsAtItsPlace()
    {
        QFETCH(int, width);
        const Sidebar bar(test::recordingsOfAllMarks(), {width, 640});
        QCOMPARE(bar.scene.root().property("minimumWidth"), QVariant(280.0));
        QCOMPARE(bar.scene.root().implicitWidth(), 300.0);

        QCOMPARE(bar.rect("appIcon"), QRectF(16, 12, 28, 28));
        QCOMPARE(bar.rect("appName").left(), 52.0);
        QCOMPARE(std::round(bar.rect("appName").center().y()), 26.0);
        QCOMPARE(bar.rect("wideButton"), QRectF(16, 54, width - 32, 44));
        QCOMPARE(bar.rect("wideButtonFill"), bar.rect("wideButton"));
        QCOMPARE(bar.rect("wideButtonCircle"), QRectF(30, 64, 24, 24));
        QCOMPARE(bar.rect("wideButtonLabel").left(), 64.0);

        const QRectF field = bar.rect("searchField");
        QCOMPARE(field.topLeft(), QPointF(16, 112));
        QCOMPARE(field.width(), width - 32.0);
        QCOMPARE(field.height(), std::ceil(bar.item("searchInput").implicitHeight()) + 14);
        const QRectF glass = bar.rect("searchSymbol");
        QCOMPARE(glass.left(), 26.0);
        QCOMPARE(bar.rect("searchInput").left(), glass.right() + 8);
        QCOMPARE(bar.rect("searchInput").right(), width - 26.0);

        const QRectF divider = bar.rect("sidebarDivider");
        QCOMPARE(divider, QRectF(16, field.bottom() + 10, width - 32, 1));
        QCOMPARE(bar.rect("recordingList"), QRectF(8, divider.bottom(), width - 16, 640 - divider.bottom()));
        for (int row = 0; row < 7; ++row) {
            const QRectF place = RenderedScene::rect(bar.row(row));
            QCOMPARE(place, QRectF(8, divider.bottom() + 6 + row * 54, width - 16, 52));
            QCOMPARE(RenderedScene::rect(Sidebar::part(bar.row(row), "statusSquare")),
                     QRectF(18, place.top() + 8, 36, 36));
            const QRectF title = RenderedScene::rect(Sidebar::part(bar.row(row), "rowTitle"));
            const QRectF date = RenderedScene::rect(Sidebar::part(bar.row(row), "rowDate"));
            const QRectF dot = RenderedScene::rect(Sidebar::part(bar.row(row), "rowDot"));
            const QRectF duration = RenderedScene::rect(Sidebar::part(bar.row(row), "rowDuration"));
            QCOMPARE(title.left(), 66.0);
            QCOMPARE(title.right(), width - 18.0);
            QCOMPARE(date.left(), 66.0);
            QCOMPARE(date.top(), title.bottom() + 3);
            QCOMPARE((title.top() + date.bottom()) / 2, place.center().y());
            QCOMPARE(dot.left(), date.right() + 6);
            QCOMPARE(duration.left(), dot.right() + 6);
            QVERIFY(duration.right() <= width - 18);
        }
    }

    void textsHaveTheirSizesAndWeights()
    {
        Sidebar bar(test::recordingsOfAllMarks());
        QCOMPARE(fontSize(bar.item("appName")), 17);
        QCOMPARE(fontWeight(bar.item("appName")), QFont::Bold);
        QCOMPARE(fontSize(bar.item("wideButtonLabel")), 13);
        QCOMPARE(fontWeight(bar.item("wideButtonLabel")), QFont::DemiBold);
        QCOMPARE(bar.item("wideButtonSymbol").property("size"), QVariant(14.0));
        QCOMPARE(fontSize(bar.item("searchInput")), 13);
        QCOMPARE(bar.item("searchSymbol").property("size"), QVariant(12.0));
        const QQuickItem &row = bar.row(3);
        QCOMPARE(fontSize(Sidebar::part(row, "rowTitle")), 13);
        QCOMPARE(fontWeight(Sidebar::part(row, "rowTitle")), QFont::Medium);
        for (const char *part : {"rowDate", "rowDot", "rowDuration"}) {
            QCOMPARE(fontSize(Sidebar::part(row, part)), 12);
            QCOMPARE(Sidebar::part(row, part).property("color").value<QColor>(),
                     bar.scene.themeColor("secondary"));
        }
        QCOMPARE(Sidebar::part(row, "rowDot").property("text"), QVariant(QStringLiteral("·")));
        QCOMPARE(Sidebar::part(row, "rowDuration").property("text"), QVariant(QStringLiteral("01:05")));
        QCOMPARE(Sidebar::part(row, "rowDuration").property("font").value<QFont>().family(),
                 bar.scene.theme().property("monospaced").toString());
        QCOMPARE(Sidebar::part(row, "rowTitle").property("color").value<QColor>(),
                 bar.scene.themeColor("primary"));
        QCOMPARE(Sidebar::part(row, "statusSymbol").property("size"), QVariant(16.0));
    }

    void theWideButtonRunsFromPurpleToBlue_data() { addSchemes(); }

    void theWideButtonRunsFromPurpleToBlue()
    {
        QFETCH(ColorScheme, scheme);
        Sidebar bar({});
        bar.scene.setScheme(scheme);
        const QImage picture = bar.scene.grab();
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {16.5, 76}), QColor(107, 92, 232), 3);
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {283.5, 76}), QColor(10, 133, 227), 3);
        // From left to right: the same above and below.
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {200, 55.5}),
                               RenderedScene::colorAt(picture, {200, 96.5}));
        // The circle, left of its symbol.
        const QColor fill = RenderedScene::colorAt(picture, {32, 60});
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {32, 76}),
                               RenderedScene::over(withOpacity(Qt::white, 0.2), fill), 3);
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {42, 76}), QColor(Qt::white), 12);

        const QQuickItem &shadow = bar.item("wideButtonShadow");
        QCOMPARE(shadow.property("blurRadius"), QVariant(8.0));
        QCOMPARE(shadow.property("offsetX"), QVariant(0.0));
        QCOMPARE(shadow.property("offsetY"), QVariant(4.0));
        QCOMPARE(shadow.property("cornerRadius"), QVariant(12.0));
        TALVENOR_COMPARE_COLOR(shadow.property("color").value<QColor>(),
                               withOpacity(QColor(107, 92, 232), 0.2));
        // Beneath the button there is something of it.
        const QColor below = RenderedScene::colorAt(picture, {150, 99});
        QVERIFY(!test::isNear(below, ground(bar.scene), 3));
        QVERIFY(test::isNear(RenderedScene::colorAt(picture, {150, 111}), ground(bar.scene), 3));
    }

    void whileRecordingTheWideButtonIsRedAndTellsTheTime_data() { addSchemes(); }

    void whileRecordingTheWideButtonIsRedAndTellsTheTime()
    {
        QFETCH(ColorScheme, scheme);
        Sidebar bar({}, {280, 640});
        bar.scene.setScheme(scheme);
        RenderedScene::setLanguage(AppLanguage::german); // the longer text
        bar.fixture.signIn();
        bar.viewModel.startRecording();
        QVERIFY(test::waitUntil([&] { return bar.viewModel.isRecording(); }));

        QCOMPARE(bar.item("wideButtonSymbol").property("name"), QVariant(QStringLiteral("stop.fill")));
        QCOMPARE(bar.item("wideButtonLabel").property("text"), QVariant(QStringLiteral("Aufnahme stoppen")));
        QVERIFY(!bar.item("wideButtonLabel").property("truncated").toBool());
        const QRectF timer = bar.rect("wideButtonTimer");
        QVERIFY(bar.item("wideButtonTimer").isVisible());
        QCOMPARE(bar.item("wideButtonTimer").opacity(), 0.85);
        QCOMPARE(timer.right(), 280.0 - 16 - 14);
        QVERIFY(bar.rect("wideButtonLabel").right() <= timer.left() - 10);
        const QQuickItem &dot = *bar.item("wideButtonTimer").childItems().at(0);
        const QQuickItem &time = *bar.item("wideButtonTimer").childItems().at(1);
        QCOMPARE(dot.size(), QSizeF(5, 5));
        QCOMPARE(time.x(), 10.0);
        QCOMPARE(fontSize(time), 12);
        QCOMPARE(time.property("text").toString(), bar.viewModel.formattedDuration());

        const QImage picture = bar.scene.grab();
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {16.5, 76}), QColor(255, 59, 48), 3);
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {263.5, 76}), QColor(232, 31, 99), 3);
        TALVENOR_COMPARE_COLOR(bar.item("wideButtonShadow").property("color").value<QColor>(),
                               withOpacity(bar.scene.themeColor("red"), 0.2));
        // The entry of the session leads the list, and its symbol moves.
        QCOMPARE(Sidebar::part(bar.row(0), "statusSymbol").property("isRunning"), QVariant(true));
        bar.viewModel.stopRecording();
        QCOMPARE(bar.item("wideButtonSymbol").property("name"), QVariant(QStringLiteral("plus")));
        QVERIFY(!bar.item("wideButtonTimer").isVisible());
    }

    void theSearchFieldLiesOnTheMaterial_data() { addSchemes(); }

    void theSearchFieldLiesOnTheMaterial()
    {
        QFETCH(ColorScheme, scheme);
        Sidebar bar({});
        bar.scene.setScheme(scheme);
        const QRectF field = bar.rect("searchField");
        QImage picture = bar.scene.grab();
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {field.right() - 30, field.bottom() - 3}),
                               RenderedScene::over(bar.scene.themeColor("material"), ground(bar.scene)), 3);
        // Its corners are round.
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, field.bottomLeft() + QPointF(0.5, -0.5)),
                               ground(bar.scene), 3);
        QCOMPARE(bar.item("searchSymbol").property("name"), QVariant(QStringLiteral("magnifyingglass")));
        QCOMPARE(bar.item("searchSymbol").property("color").value<QColor>(),
                 bar.scene.themeColor("tertiary"));
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, bar.rect("sidebarDivider").center()),
                               RenderedScene::over(bar.scene.themeColor("divider"), ground(bar.scene)), 3);

        QVERIFY(!bar.item("clearSearch").isVisible());
        bar.search(QStringLiteral("x"));
        QVERIFY(bar.item("clearSearch").isVisible());
        // Its symbol ends at the field's padding, whatever takes clicks around it.
        const QRectF clear = bar.rect("clearSearch");
        QCOMPARE(clear.right() - bar.item("clearSearch").property("rightPadding").toDouble(),
                 field.right() - 10);
        QCOMPARE(bar.rect("searchInput").right(),
                 clear.left() + bar.item("clearSearch").property("leftPadding").toDouble() - 8);
        QVERIFY(clear.width() >= 20 && clear.height() >= 20);
    }

    void everyStatusHasItsMark_data() { addSchemes(); }

    void everyStatusHasItsMark()
    {
        QFETCH(ColorScheme, scheme);
        Sidebar bar(test::recordingsOfAllMarks());
        bar.scene.setScheme(scheme);
        const QImage picture = bar.scene.grab();
        int at = 0;
        for (const Mark &mark : marks) {
            const QQuickItem &row = bar.row(at);
            const QQuickItem &symbol = Sidebar::part(row, "statusSymbol");
            const QColor color = bar.scene.themeColor(mark.color);
            QCOMPARE(symbol.property("name").toString(), QString::fromLatin1(mark.symbol));
            QCOMPARE(symbol.property("color").value<QColor>(), color);
            QCOMPARE(symbol.property("isRunning").toBool(), at == 0);
            // Below the symbol, inside of the corners.
            const QRectF square = RenderedScene::rect(Sidebar::part(row, "statusSquare"));
            TALVENOR_COMPARE_COLOR(
                RenderedScene::colorAt(picture, {square.left() + 3.5, square.center().y()}),
                RenderedScene::over(withOpacity(color, mark.opacity), ground(bar.scene)), 3);
            TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, square.topLeft() + QPointF(0.4, 0.4)),
                                   ground(bar.scene), 3);
            ++at;
        }
    }

    void rowsAreFilledWhenSelectedElseWhenHovered_data() { addSchemes(); }

    void rowsAreFilledWhenSelectedElseWhenHovered()
    {
        QFETCH(ColorScheme, scheme);
        const bool isDark = scheme == ColorScheme::dark;
        Sidebar bar(test::recordingsOfAllMarks());
        bar.scene.setScheme(scheme);
        const QColor below = ground(bar.scene);
        const auto fillOf = [&bar](int row) {
            const QRectF place = RenderedScene::rect(bar.row(row));
            return bar.scene.colorAt({place.right() - 4, place.center().y()});
        };
        const auto strengthOf = [&bar](int row) { return bar.row(row).property("hoverStrength").toDouble(); };
        const QColor selected = RenderedScene::over(
            isDark ? withOpacity(Qt::white, 0.08) : withOpacity(QColor(107, 92, 232), 0.08), below);
        const QColor hovered =
            RenderedScene::over(isDark ? withOpacity(Qt::white, 0.04) : withOpacity(Qt::black, 0.03), below);

        TALVENOR_COMPARE_COLOR(fillOf(2), below);
        bar.scene.hover(RenderedScene::rect(bar.row(2)).center());
        QCOMPARE(bar.scene.root().property("hoveredId").toString(),
                 bar.row(2).property("recordingId").toString());
        QVERIFY(strengthOf(2) < 1); // on its way
        QVERIFY(test::waitUntil([&] { return strengthOf(2) == 1; }));
        TALVENOR_COMPARE_COLOR(fillOf(2), hovered);

        bar.scene.click(bar.row(2));
        TALVENOR_COMPARE_COLOR(fillOf(2), selected); // at once
        bar.scene.hover(RenderedScene::rect(bar.row(3)).center());
        QVERIFY(test::waitUntil([&] { return strengthOf(3) == 1; }));
        TALVENOR_COMPARE_COLOR(fillOf(3), hovered);
        TALVENOR_COMPARE_COLOR(fillOf(2), selected);
        bar.scene.hover({150, 20});
        QVERIFY(bar.scene.root().property("hoveredId").toString().isEmpty());
        QVERIFY(test::waitUntil([&] { return strengthOf(3) == 0; }));
        TALVENOR_COMPARE_COLOR(fillOf(3), below);
        // Round corners.
        TALVENOR_COMPARE_COLOR(
            bar.scene.colorAt(RenderedScene::rect(bar.row(2)).topRight() + QPointF(-0.6, 0.6)), below);
    }

    void withoutRowsItIsSaidWhy_data()
    {
        QTest::addColumn<AppLanguage>("language");
        QTest::addColumn<QString>("none");
        QTest::addColumn<QString>("hint");
        QTest::addColumn<QString>("noResults");
        QTest::newRow("English") << AppLanguage::english << QStringLiteral("No Recordings Yet")
                                 << QStringLiteral("Start your first recording")
                                 << QStringLiteral("No Results");
        QTest::newRow("German") << AppLanguage::german << QStringLiteral("Noch keine Aufnahmen")
                                << QStringLiteral("Starte deine erste Aufnahme")
                                << QStringLiteral("Keine Ergebnisse");
    }

    void withoutRowsItIsSaidWhy()
    {
        QFETCH(AppLanguage, language);
        QFETCH(QString, none);
        QFETCH(QString, hint);
        QFETCH(QString, noResults);
        Sidebar bar({});
        RenderedScene::setLanguage(language);
        const QQuickItem &empty = bar.item("emptyState");
        QVERIFY(empty.isVisible());
        QVERIFY(!bar.list.isVisible());
        QCOMPARE(empty.property("title").toString(), none);
        QCOMPARE(empty.property("hint").toString(), hint);
        QCOMPARE(empty.property("symbol").toString(), QStringLiteral("waveform.slash"));
        QCOMPARE(empty.property("symbolSize").toDouble(), 35.0);
        QCOMPARE(empty.property("diameter").toDouble(), 80.0);
        TALVENOR_COMPARE_COLOR(empty.property("circleColor").value<QColor>(),
                               withOpacity(QColor(107, 92, 232), 0.08));
        const QRectF room = RenderedScene::rect(empty);
        QCOMPARE(room.top(), bar.rect("sidebarDivider").bottom());
        QCOMPARE(room.bottom(), 640.0);
        QVERIFY(bar.scene.accessible(QAccessible::StaticText, none));
        QVERIFY(bar.scene.accessible(QAccessible::StaticText, hint));

        bar.search(QStringLiteral("x"));
        QCOMPARE(empty.property("title").toString(), noResults);
        QCOMPARE(empty.property("hint").toString(), QString());
        QVERIFY(bar.scene.accessible(QAccessible::StaticText, noResults));
        QVERIFY(!bar.scene.accessible(QAccessible::StaticText, hint));
    }
};

TALVENOR_SCREEN_TEST_MAIN(SidebarLookTest)
#include "SidebarLookTest.moc"
