#include "RenderedScene.h"

#include "support/Await.h"

#include <QElapsedTimer>
#include <QTest>

using namespace talvenor;
using test::RenderedScene;
using test::waitUntil;

namespace {

const QByteArray sheetWithButtons =
    "Item {\n"
    "    property int clicks: 0\n"
    "    PushButton { objectName: 'beneath'; text: 'Beneath'; onClicked: ++parent.clicks }\n"
    "    Sheet { id: sheet; objectName: 'sheet'; title: 'Settings'; visible: true; padding: 0\n"
    "        idealWidth: 300; idealHeight: 240\n"
    "        header: SheetTitleBar { objectName: 'bar'; title: sheet.title; onCloseRequested: sheet.close() "
    "}\n"
    "        contentItem: ScrollArea { objectName: 'area'; padding: 20; spacing: 10\n"
    "            Repeater { model: 12; delegate: PushButton { required property int index\n"
    "                text: 'Button ' + index } } } } }";

bool isOpen(const RenderedScene &scene, const char *name)
{
    return scene.object(QString::fromLatin1(name))->property("visible").toBool();
}

void waitUntilOpened(const RenderedScene &scene, const char *name)
{
    QVERIFY(waitUntil([&] { return scene.object(QString::fromLatin1(name))->property("opened").toBool(); }));
}

QRectF popupRect(const RenderedScene &scene, const char *name)
{
    auto *const background =
        scene.object(QString::fromLatin1(name))->property("background").value<QQuickItem *>();
    return RenderedScene::rect(*background);
}

} // namespace

/// Sheets, alerts, menus and tooltips.
class PopupsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSheetIsADialogNamedByItsTitle()
    {
        const RenderedScene scene(sheetWithButtons, {600, 500});
        waitUntilOpened(scene, "sheet");
        QVERIFY2(scene.accessible(QAccessible::Dialog, QStringLiteral("Settings")),
                 qPrintable(scene.accessibleTree()));
        QCOMPARE(popupRect(scene, "sheet"), QRectF(150, 130, 300, 240));
    }

    void aSheetShrinksToItsWindowAndScrolls()
    {
        const RenderedScene scene(sheetWithButtons, {260, 200});
        waitUntilOpened(scene, "sheet");
        QCOMPARE(popupRect(scene, "sheet"), QRectF(16, 16, 228, 168));
        const QQuickItem &area = scene.item(QStringLiteral("area"));
        QVERIFY(area.property("contentHeight").toReal() > area.height());
        scene.window().resize(600, 500);
        QVERIFY(waitUntil([&] { return popupRect(scene, "sheet") == QRectF(150, 130, 300, 240); }));
    }

    void escapeClosesASheet()
    {
        const RenderedScene scene(sheetWithButtons, {600, 500});
        waitUntilOpened(scene, "sheet");
        scene.press(Qt::Key_Escape);
        QVERIFY(waitUntil([&] { return !isOpen(scene, "sheet"); }));
    }

    void theCrossClosesASheet()
    {
        const RenderedScene scene(sheetWithButtons, {600, 500});
        waitUntilOpened(scene, "sheet");
        QAccessibleInterface *const close = scene.accessible(QAccessible::Button, QStringLiteral("Close"));
        QVERIFY2(close, qPrintable(scene.accessibleTree()));
        RenderedScene::setLanguage(AppLanguage::german);
        QCOMPARE(close->text(QAccessible::Name), QStringLiteral("Schließen"));
        auto &button = dynamic_cast<QQuickItem &>(*close->object());
        const QRectF place = RenderedScene::rect(button);
        QCOMPARE(place.size(), QSizeF(28, 28));
        const QRectF sheet = popupRect(scene, "sheet");
        QCOMPARE(sheet.right() - place.right(), 24.0);
        QCOMPARE(place.top() - sheet.top(), 20.0);
        QColor quaternary = scene.themeColor("quaternary");
        quaternary.setAlphaF(0.5);
        TALVENOR_COMPARE_COLOR(scene.colorAt({place.left() + 4, place.center().y()}),
                               RenderedScene::over(quaternary, scene.themeColor("sheet")));
        scene.click(button);
        QVERIFY(waitUntil([&] { return !isOpen(scene, "sheet"); }));
    }

    void whatLiesBeneathASheetIsOutOfReach()
    {
        const RenderedScene scene(sheetWithButtons, {600, 500});
        waitUntilOpened(scene, "sheet");
        const QQuickItem &beneath = scene.item(QStringLiteral("beneath"));
        scene.click(beneath);
        QCOMPARE(scene.root().property("clicks").toInt(), 0);
        for (int i = 0; i < 30; ++i) {
            scene.press(Qt::Key_Tab);
            QVERIFY(!beneath.hasActiveFocus());
        }
        QVERIFY(isOpen(scene, "sheet"));
    }

    void whatTheKeyboardReachesComesIntoView()
    {
        const RenderedScene scene(sheetWithButtons, {600, 500});
        waitUntilOpened(scene, "sheet");
        const QQuickItem &area = scene.item(QStringLiteral("area"));
        const QRectF room = RenderedScene::rect(area);
        int reached = 0;
        while (reached < 12) {
            scene.press(Qt::Key_Tab);
            const QQuickItem *const focused = scene.window().activeFocusItem();
            const QString text = focused->property("text").toString();
            if (!text.startsWith(u"Button"))
                continue;
            ++reached;
            QVERIFY2(room.contains(RenderedScene::rect(*focused)), qPrintable(text));
        }
        scene.press(Qt::Key_Home);
        QCOMPARE(area.property("contentY").toReal(), 0.0);
        scene.press(Qt::Key_PageDown);
        QVERIFY(area.property("contentY").toReal() > 50);
        scene.press(Qt::Key_End);
        QCOMPARE(area.property("contentY").toReal(), area.property("contentHeight").toReal() - area.height());
    }

    void anAlertIsDismissedHoweverItIsClosed_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("Return on its button") << Qt::Key_Return;
        QTest::newRow("Space on its button") << Qt::Key_Space;
        QTest::newRow("Escape") << Qt::Key_Escape;
    }

    void anAlertIsDismissedHoweverItIsClosed()
    {
        QFETCH(Qt::Key, key);
        const RenderedScene scene(
            "Item { property bool isShown: true; property int dismissals: 0\n"
            "MessageAlert { objectName: 'alert'; title: 'Error'; message: 'No microphone found.'\n"
            "isPresented: parent.isShown\n"
            "onDismissed: { ++parent.dismissals; parent.isShown = false } } }",
            {600, 400});
        waitUntilOpened(scene, "alert");
        QVERIFY2(scene.accessible(QAccessible::Dialog, QStringLiteral("Error")),
                 qPrintable(scene.accessibleTree()));
        QVERIFY(scene.accessible(QAccessible::StaticText, QStringLiteral("No microphone found.")));
        QVERIFY(scene.accessible(QAccessible::Button, QStringLiteral("OK"))->state().focused);
        scene.press(key);
        QVERIFY(waitUntil([&] { return !isOpen(scene, "alert"); }));
        QVERIFY(!scene.root().property("isShown").toBool());
        QVERIFY(scene.root().setProperty("isShown", true));
        waitUntilOpened(scene, "alert");
    }

    void anAlertOfMegabytesStaysInItsWindow()
    {
        const RenderedScene scene(
            "Item { property string words; MessageAlert { objectName: 'alert'; title: parent.words\n"
            "message: parent.words; isPresented: true; onDismissed: {} } }",
            {600, 400},
            {{QStringLiteral("words"), QString(u"<b>Fehler</b>\nمرحبا 🎙 "_qs).repeated(200'000)}});
        waitUntilOpened(scene, "alert");
        QVERIFY(QRectF(0, 0, 600, 400).contains(popupRect(scene, "alert")));
        QAccessibleInterface *const button = scene.accessible(QAccessible::Button, QStringLiteral("OK"));
        QVERIFY(popupRect(scene, "alert")
                    .contains(RenderedScene::rect(dynamic_cast<QQuickItem &>(*button->object()))));
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!scene.grab().isNull());
        QVERIFY(clock.elapsed() < 2'000);
    }

    void aMenuIsUsedByTheKeyboard()
    {
        const RenderedScene scene(menu(), {400, 300});
        openMenu(scene);
        QAccessibleInterface *const entry = scene.accessible(QAccessible::MenuItem, QStringLiteral("Export"));
        QVERIFY2(entry, qPrintable(scene.accessibleTree()));
        scene.press(Qt::Key_Down);
        scene.press(Qt::Key_Return);
        QCOMPARE(scene.root().property("chosen").toString(), QStringLiteral("Export"));
        QVERIFY(waitUntil([&] { return !isOpen(scene, "menu"); }));

        openMenu(scene);
        scene.press(Qt::Key_Escape);
        QVERIFY(waitUntil([&] { return !isOpen(scene, "menu"); }));
        QCOMPARE(scene.root().property("chosen").toString(), QStringLiteral("Export"));
    }

    void aMenuIsUsedByPointerAndTree()
    {
        const RenderedScene scene(menu(), {400, 300});
        openMenu(scene);
        scene.click(scene.item(QStringLiteral("delete")));
        QCOMPARE(scene.root().property("chosen").toString(), QStringLiteral("Delete"));
        QVERIFY(waitUntil([&] { return !isOpen(scene, "menu"); }));
        openMenu(scene);
        // What cannot be done now says so.
        scene.click(scene.item(QStringLiteral("summarize")));
        QCOMPARE(scene.root().property("chosen").toString(), QStringLiteral("Delete"));
        QVERIFY(scene.accessible(QAccessible::MenuItem, QStringLiteral("Summarize"))->state().disabled);
        scene.accessible(QAccessible::MenuItem, QStringLiteral("Export"))
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(scene.root().property("chosen").toString(), QStringLiteral("Export"));
        QVERIFY(waitUntil([&] { return !isOpen(scene, "menu"); }));
    }

    void whatCannotBeTakenBackIsRed()
    {
        RenderedScene scene(menu(), {400, 300});
        openMenu(scene);
        QQuickItem *const label =
            scene.item(QStringLiteral("delete")).property("contentItem").value<QQuickItem *>();
        QCOMPARE(label->property("color").value<QColor>(), scene.themeColor("redText"));
        scene.setScheme(ColorScheme::dark);
        QCOMPARE(label->property("color").value<QColor>(), scene.themeColor("redText"));
        // The menu's ground follows the scheme too.
        const QRectF area = popupRect(scene, "menu");
        TALVENOR_COMPARE_COLOR(scene.colorAt({area.right() - 8, area.top() + 3}), scene.themeColor("popup"));
    }

    void aTooltipComesAfterAWhileAndShowsItsTextAsItIs()
    {
        RenderedScene scene(
            "PushButton { x: 100; y: 100; text: 'Plans'\n"
            "Tooltip { objectName: 'tip'; isWanted: parent.hovered; text: '<b>Bold</b> & \\n more' } }");
        QVERIFY(!isOpen(scene, "tip"));
        QElapsedTimer clock;
        clock.start();
        scene.hover(RenderedScene::rect(scene.root()).center());
        QVERIFY(waitUntil([&] { return isOpen(scene, "tip"); }));
        QVERIFY2(clock.elapsed() > 600, qPrintable(QString::number(clock.elapsed())));
        auto *const words =
            scene.object(QStringLiteral("tip"))->property("contentItem").value<QQuickItem *>();
        QCOMPARE(words->property("text").toString(), QStringLiteral("<b>Bold</b> &   more"));
        QCOMPARE(words->property("textFormat").toInt(), int(Qt::PlainText));
        scene.setScheme(ColorScheme::dark);
        QCOMPARE(words->property("color").value<QColor>(), scene.themeColor("primary"));
        const QRectF area = popupRect(scene, "tip");
        TALVENOR_COMPARE_COLOR(scene.colorAt({area.left() + 4, area.center().y()}),
                               scene.themeColor("popup"));
        scene.hover({10, 10});
        QVERIFY(waitUntil([&] { return !isOpen(scene, "tip"); }));
    }

private:
    static QByteArray menu()
    {
        return "Item { id: page; property string chosen\n"
               "function open() { menu.popup(page, 40, 40) }\n"
               "ContextMenu { id: menu; objectName: 'menu'\n"
               "MenuEntry { text: 'Export'; icon.name: 'trash'; onTriggered: page.chosen = text }\n"
               "MenuEntry { objectName: 'summarize'; text: 'Summarize'; enabled: false; onTriggered: "
               "page.chosen = text }\n"
               "MenuDivider {}\n"
               "MenuEntry { objectName: 'delete'; text: 'Delete'; isDestructive: true; onTriggered: "
               "page.chosen = text } } }";
    }

    static void openMenu(const RenderedScene &scene)
    {
        QVERIFY(QMetaObject::invokeMethod(&scene.root(), "open"));
        waitUntilOpened(scene, "menu");
    }
};

TALVENOR_SCREEN_TEST_MAIN(PopupsTest)
#include "PopupsTest.moc"
