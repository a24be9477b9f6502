#include "RenderedScene.h"

#include "settings/L10n.h"
#include "support/Await.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QSignalSpy>
#include <QTest>

using namespace talvenor;
using test::RenderedScene;
using test::waitUntil;

namespace {

const QColor purple(107, 92, 232);
const QColor blue(10, 133, 227);
const QColor lightWindow(0xf5, 0xf5, 0xf7);
const QColor lightSecondary(0x5f, 0x5f, 0x66);
const QColor darkWindow(0x1e, 0x1e, 0x20);
const QColor darkSecondary(0xa6, 0xa6, 0xad);

QColor at(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

QColor mixed(const QColor &from, const QColor &to, double share)
{
    const auto channel = [share](int a, int b) { return qRound(a + (b - a) * share); };
    return {channel(from.red(), to.red()), channel(from.green(), to.green()),
            channel(from.blue(), to.blue())};
}

/// The first item below `root` of the QML type with this name.
QQuickItem *descendant(const QQuickItem &root, const char *typeName)
{
    for (QQuickItem *const child : root.childItems()) {
        if (QByteArray(child->metaObject()->className()).startsWith(typeName))
            return child;
        if (QQuickItem *const found = descendant(*child, typeName))
            return found;
    }
    return nullptr;
}

/// The first text below `root` that shows this.
QQuickItem *textItem(const QQuickItem &root, const QString &text)
{
    for (QQuickItem *const child : root.childItems()) {
        if (child->inherits("QQuickText") && child->property("text").toString() == text)
            return child;
        if (QQuickItem *const found = textItem(*child, text))
            return found;
    }
    return nullptr;
}

} // namespace

/// Buttons, tabs, cards and choices: their looks by the numbers, and their use by pointer, keyboard and tree.
class ControlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anActionButtonHasItsPaddings()
    {
        const RenderedScene scene(
            "ActionButton { x: 20; y: 20; title: 'Export'; icon: 'square.and.arrow.up' }");
        QQuickItem *const label = descendant(scene.root(), "IconLabel");
        QVERIFY(label);
        const QRectF outer = RenderedScene::rect(scene.root());
        const QRectF inner = RenderedScene::rect(*label);
        QCOMPARE(inner.left() - outer.left(), 12.0);
        QCOMPARE(outer.right() - inner.right(), 12.0);
        QCOMPARE(inner.top() - outer.top(), 6.0);
        QCOMPARE(outer.bottom() - inner.bottom(), 6.0);
        QQuickItem *const text = textItem(scene.root(), QStringLiteral("Export"));
        QVERIFY(text);
        QCOMPARE(text->property("font").value<QFont>().pixelSize(), 12);
        QCOMPARE(text->property("font").value<QFont>().weight(), QFont::Medium);
    }

    void anAccentActionButtonRunsFromLeftToRight()
    {
        RenderedScene scene("ActionButton { x: 20; y: 20; title: 'Export'; style: ActionButton.Accent }");
        const QRectF area = RenderedScene::rect(scene.root());
        const QImage rest = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(rest, {area.left() + 0.2, area.center().y()}), purple, 4);
        TALVENOR_COMPARE_COLOR(scene.colorAt(rest, {area.right() - 1.2, area.center().y()}), blue, 4);
        TALVENOR_COMPARE_COLOR(scene.colorAt(rest, {area.center().x(), area.top() + 1}),
                               mixed(purple, blue, 0.5), 4);
        TALVENOR_COMPARE_COLOR(scene.colorAt(rest, area.topLeft() + QPointF(0.5, 0.5)), lightWindow, 4);
        scene.hover(area.center());
        QVERIFY(waitUntil([&] { return scene.root().property("isHovered").toBool(); }));
        TALVENOR_COMPARE_COLOR(scene.colorAt({area.left() + 0.2, area.center().y()}),
                               RenderedScene::over(at(purple, 0.9), lightWindow), 4);
        scene.hover(area.bottomRight() + QPointF(50, 50));
        QVERIFY(waitUntil([&] { return !scene.root().property("isHovered").toBool(); }));
        TALVENOR_COMPARE_COLOR(scene.colorAt({area.left() + 0.2, area.center().y()}), purple, 4);
    }

    void aSecondaryActionButtonIsATraceOfSecondary_data()
    {
        QTest::addColumn<ColorScheme>("scheme");
        QTest::addColumn<QColor>("window");
        QTest::addColumn<QColor>("secondary");
        QTest::newRow("light") << ColorScheme::light << lightWindow << lightSecondary;
        QTest::newRow("dark") << ColorScheme::dark << darkWindow << darkSecondary;
    }

    void aSecondaryActionButtonIsATraceOfSecondary()
    {
        QFETCH(ColorScheme, scheme);
        QFETCH(QColor, window);
        QFETCH(QColor, secondary);
        RenderedScene scene("ActionButton { x: 20; y: 20; title: 'Export' }");
        scene.setScheme(scheme);
        const QRectF area = RenderedScene::rect(scene.root());
        const QPointF place(area.left() + 4, area.center().y());
        TALVENOR_COMPARE_COLOR(scene.colorAt(place), RenderedScene::over(at(secondary, 0.1), window));
        scene.hover(area.center());
        QVERIFY(waitUntil([&] { return scene.root().property("isHovered").toBool(); }));
        TALVENOR_COMPARE_COLOR(scene.colorAt(place), RenderedScene::over(at(secondary, 0.15), window));
    }

    void buttonsAreClickedByPointerKeysAndTree_data()
    {
        QTest::addColumn<QByteArray>("qml");
        QTest::newRow("ActionButton") << QByteArray("ActionButton { x: 20; y: 20; title: 'Press'");
        QTest::newRow("PushButton") << QByteArray("PushButton { x: 20; y: 20; text: 'Press'");
        QTest::newRow("PlainButton") << QByteArray("PlainButton { x: 20; y: 20; text: 'Press'");
        QTest::newRow("CloseButton") << QByteArray("CloseButton { x: 20; y: 20; spokenName: 'Press'");
    }

    void buttonsAreClickedByPointerKeysAndTree()
    {
        QFETCH(QByteArray, qml);
        const RenderedScene scene(qml + "; property int clicks: 0; onClicked: ++clicks; focus: true }");
        const auto clicks = [&scene] { return scene.root().property("clicks").toInt(); };
        scene.click(scene.root());
        QCOMPARE(clicks(), 1);
        scene.root().forceActiveFocus(Qt::TabFocusReason);
        scene.press(Qt::Key_Space);
        QCOMPARE(clicks(), 2);
        scene.press(Qt::Key_Return);
        QCOMPARE(clicks(), 3);
        scene.press(Qt::Key_Enter);
        QCOMPARE(clicks(), 4);
        QAccessibleInterface *const button = scene.accessible(QAccessible::Button, QStringLiteral("Press"));
        QVERIFY2(button, qPrintable(scene.accessibleTree()));
        QVERIFY(button->state().focusable);
        QVERIFY(button->state().focused);
        button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(clicks(), 5);

        scene.root().setEnabled(false);
        QVERIFY(button->state().disabled);
        scene.click(scene.root());
        scene.press(Qt::Key_Return);
        button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(clicks(), 5);
    }

    void aKeyHeldDownIsOnePress_data()
    {
        QTest::addColumn<QByteArray>("qml");
        QTest::addColumn<Qt::Key>("key");
        const QList<std::pair<const char *, QByteArray>> controls{
            {"ActionButton", "ActionButton { title: 'Press'; onClicked: ++count"},
            {"PushButton", "PushButton { text: 'Press'; onClicked: ++count"},
            {"PlainButton", "PlainButton { text: 'Press'; onClicked: ++count"},
            {"ToggleSwitch", "ToggleSwitch { text: 'Press'; isOn: false; onToggled: ++count"},
            {"RecordButton", "RecordButton { isRecording: false; audioLevel: 0; onClicked: ++count"}};
        for (const auto &[name, qml] : controls) {
            QTest::addRow("%s, Return", name) << qml << Qt::Key_Return;
            QTest::addRow("%s, Enter", name) << qml << Qt::Key_Enter;
            QTest::addRow("%s, Space", name) << qml << Qt::Key_Space;
        }
    }

    void aKeyHeldDownIsOnePress()
    {
        QFETCH(const QByteArray, qml);
        QFETCH(const Qt::Key, key);
        const RenderedScene scene(qml + "; property int count: 0; focus: true }");
        scene.root().forceActiveFocus(Qt::TabFocusReason);
        const auto send = [&scene, key](QEvent::Type type, bool isRepeated) {
            QKeyEvent event(type, key, Qt::NoModifier, QString(), isRepeated);
            QCoreApplication::sendEvent(&scene.window(), &event);
        };
        send(QEvent::KeyPress, false);
        // What X tells while a key is down.
        for (int i = 0; i < 3; ++i) {
            send(QEvent::KeyRelease, true);
            send(QEvent::KeyPress, true);
        }
        send(QEvent::KeyRelease, false);
        QCOMPARE(scene.root().property("count").toInt(), 1);
        scene.press(key);
        QCOMPARE(scene.root().property("count").toInt(), 2);
    }

    void theKeyboardsPlaceIsSeen()
    {
        const RenderedScene scene("ActionButton { x: 20; y: 20; title: 'Export' }");
        const QRectF area = RenderedScene::rect(scene.root());
        const QPointF outside(area.center().x(), area.top() - 2);
        TALVENOR_COMPARE_COLOR(scene.colorAt(outside), lightWindow);
        scene.press(Qt::Key_Tab);
        TALVENOR_COMPARE_COLOR(scene.colorAt(outside), scene.themeColor("focusRing"), 4);
    }

    void aBusyButtonShowsASpinnerInPlaceOfItsText()
    {
        const RenderedScene scene(
            "PushButton { x: 20; y: 20; text: 'Sign In'; look: PushButton.Accent; isBusy: true }");
        QQuickItem *const spinner = descendant(scene.root(), "Spinner");
        QVERIFY(spinner && spinner->isVisible());
        QCOMPARE(spinner->property("color").value<QColor>(), QColor(Qt::white));
        QVERIFY(scene.root().setProperty("isBusy", false));
        QVERIFY(!spinner->isVisible());
        QVERIFY(scene.accessible(QAccessible::Button, QStringLiteral("Sign In")));
    }

    void aSpinnerTurnsOnlyWhileItIsSeen()
    {
        const RenderedScene scene("Item { Spinner { objectName: 'spinner'; color: Theme.secondary } }");
        QQuickItem &spinner = scene.item(QStringLiteral("spinner"));
        QCOMPARE(spinner.width(), 16.0);
        const double before = spinner.rotation();
        QVERIFY(waitUntil([&] { return spinner.rotation() != before; }));
        spinner.setVisible(false);
        const double hidden = spinner.rotation();
        QTest::qWait(60);
        QCOMPARE(spinner.rotation(), hidden);
        spinner.setVisible(true);
        QVERIFY(waitUntil([&] { return spinner.rotation() != hidden; }));
        scene.window().hide();
        const double away = spinner.rotation();
        QTest::qWait(60);
        QCOMPARE(spinner.rotation(), away);
    }

    void aTabHasItsMeasures()
    {
        const RenderedScene scene(
            "DetailTabButton { x: 20; y: 20; title: 'Transcript'; icon: 'text.alignleft'\n"
            "isSelected: true }");
        const QRectF outer = RenderedScene::rect(scene.root());
        QQuickItem *const text = textItem(scene.root(), QStringLiteral("Transcript"));
        QQuickItem *const symbol = descendant(scene.root(), "talvenor::Symbol");
        QVERIFY(text && symbol);
        const QRectF bar = RenderedScene::rect(scene.item(QStringLiteral("underline")));
        QCOMPARE(bar.height(), 2.0);
        QCOMPARE(bar.left() - outer.left(), 8.0);
        QCOMPARE(outer.right() - bar.right(), 8.0);
        QCOMPARE(bar.bottom(), outer.bottom());
        const QRectF words = RenderedScene::rect(*text);
        const QRectF icon = RenderedScene::rect(*symbol);
        QCOMPARE(icon.left() - outer.left(), 12.0);
        QCOMPARE(words.left() - icon.right(), 6.0);
        QCOMPARE(outer.right() - words.right(), 12.0);
        QCOMPARE(std::min(words.top(), icon.top()) - outer.top(), 10.0);
        QCOMPARE(bar.top() - std::max(words.bottom(), icon.bottom()), 8.0);
        QCOMPARE(text->property("font").value<QFont>().pixelSize(), 13);
        QCOMPARE(symbol->property("size").toReal(), 12.0);
    }

    void aTabShowsWhetherItIsSelected()
    {
        const RenderedScene scene("DetailTabButton { x: 20; y: 20; title: 'Summary'; isSelected: false\n"
                                  "property int clicks: 0; onClicked: ++clicks }");
        QQuickItem *const text = textItem(scene.root(), QStringLiteral("Summary"));
        const QRectF bar = RenderedScene::rect(scene.item(QStringLiteral("underline")));
        QCOMPARE(text->property("color").value<QColor>(), lightSecondary);
        QCOMPARE(text->property("font").value<QFont>().weight(), QFont::Normal);
        TALVENOR_COMPARE_COLOR(scene.colorAt(bar.center()), lightWindow);
        QAccessibleInterface *const tab = scene.accessible(QAccessible::PageTab, QStringLiteral("Summary"));
        QVERIFY2(tab, qPrintable(scene.accessibleTree()));
        QVERIFY(!tab->state().selected);
        QVERIFY(scene.root().setProperty("isSelected", true));
        QCOMPARE(text->property("color").value<QColor>(), scene.themeColor("primary"));
        QCOMPARE(text->property("font").value<QFont>().weight(), QFont::DemiBold);
        const QRectF wide = RenderedScene::rect(scene.item(QStringLiteral("underline")));
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {wide.left() + 2, wide.center().y()}), purple, 8);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {wide.right() - 2, wide.center().y()}), blue, 8);
        QVERIFY(tab->state().selected);
        scene.click(scene.root());
        scene.root().forceActiveFocus(Qt::TabFocusReason);
        scene.press(Qt::Key_Space);
        scene.press(Qt::Key_Return);
        tab->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(scene.root().property("clicks").toInt(), 4);
    }

    void aCardHasItsMeasuresAndColours_data()
    {
        QTest::addColumn<ColorScheme>("scheme");
        QTest::addColumn<QColor>("fill");
        QTest::addColumn<QColor>("edge");
        QTest::addColumn<bool>("hasShadow");
        const QColor darkFill = RenderedScene::over(at(Qt::white, 0.04), darkWindow);
        QTest::newRow("light") << ColorScheme::light << QColor(Qt::white)
                               << RenderedScene::over(at(Qt::black, 0.04), Qt::white) << true;
        QTest::newRow("dark") << ColorScheme::dark << darkFill
                              << RenderedScene::over(at(Qt::white, 0.06), darkFill) << false;
    }

    void aCardHasItsMeasuresAndColours()
    {
        QFETCH(ColorScheme, scheme);
        QFETCH(QColor, fill);
        QFETCH(QColor, edge);
        QFETCH(bool, hasShadow);
        RenderedScene scene("SettingsCard { x: 20; y: 20; width: 200\n"
                            "Item { objectName: 'content'; implicitHeight: 50; Layout.fillWidth: true } }");
        scene.setScheme(scheme);
        QCOMPARE(RenderedScene::rect(scene.root()), QRectF(20, 20, 200, 82));
        QCOMPARE(RenderedScene::rect(scene.item(QStringLiteral("content"))), QRectF(36, 36, 168, 50));
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {120, 60}), fill);
        // The stroke lies on the outline: inside of it is half of a line of the border's colour over the
        // fill.
        const double inside = picture.devicePixelRatio() > 1 ? 1 : 0.5;
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {20.1, 60}), mixed(fill, edge, inside), 2);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {22, 22}), scene.themeColor("windowBackground"), 6);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {30, 24}), fill, 6);
        const QColor below = scene.colorAt(picture, {120, 104.5});
        const QColor window = scene.themeColor("windowBackground");
        QCOMPARE(below.lightness() < window.lightness(), hasShadow);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {120, 122}), window, 1);
    }

    void theLanguageSwitcherHasItsMeasures()
    {
        const RenderedScene scene("LanguageSwitcher { x: 20; y: 20; selection: L10n.current }");
        QCOMPARE(RenderedScene::rect(scene.root()), QRectF(20, 20, 3 + 40 + 2 + 40 + 3, 3 + 28 + 3));
        QQuickItem *const german = textItem(scene.root(), QStringLiteral("DE"));
        QQuickItem *const english = textItem(scene.root(), QStringLiteral("EN"));
        QVERIFY(german && english);
        QCOMPARE(RenderedScene::rect(*german->parentItem()), QRectF(23, 23, 40, 28));
        QCOMPARE(RenderedScene::rect(*english->parentItem()), QRectF(65, 23, 40, 28));
        QCOMPARE(german->property("font").value<QFont>().pixelSize(), 12);
        QCOMPARE(german->property("font").value<QFont>().weight(), QFont::Bold);
        QCOMPARE(german->property("color").value<QColor>(), lightSecondary);
        QCOMPARE(english->property("color").value<QColor>(), QColor(Qt::white));
        const QColor ground = RenderedScene::over(at(lightSecondary, 0.1), lightWindow);
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {64, 37}), ground);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {26, 37}), ground);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {65.2, 37}), purple, 5);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {104.6, 37}), blue, 5);
        // Rounded by 10 outside and by 7 inside.
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {21.5, 21.5}), lightWindow, 3);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {25, 22}), ground, 4);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {65.6, 23.6}), ground, 8);
    }

    void theLanguageSwitcherIsAPairOfRadioButtons()
    {
        const RenderedScene scene("LanguageSwitcher { x: 20; y: 20; selection: L10n.current\n"
                                  "onSelected: language => L10n.current = language }");
        QAccessibleInterface *const german =
            scene.accessible(QAccessible::RadioButton, QStringLiteral("Deutsch"));
        QAccessibleInterface *const english =
            scene.accessible(QAccessible::RadioButton, QStringLiteral("English"));
        QVERIFY2(german && english, qPrintable(scene.accessibleTree()));
        QVERIFY(!german->state().checked);
        QVERIFY(english->state().checked);
        scene.click({40, 36});
        QVERIFY(L10n::isGerman());
        QVERIFY(german->state().checked);
        QVERIFY(!english->state().checked);
        // It fades over, and comes to rest.
        QVERIFY(waitUntil([&] { return test::isNear(scene.colorAt({23.2, 37}), purple, 5); }));
        QVERIFY(waitUntil([&] { return !test::isNear(scene.colorAt({104.6, 37}), blue, 40); }));

        scene.press(Qt::Key_Tab);
        QVERIFY(german->state().focused);
        scene.press(Qt::Key_Right);
        QVERIFY(english->state().focused);
        QVERIFY(L10n::isGerman());
        scene.press(Qt::Key_Space);
        QVERIFY(!L10n::isGerman());
        german->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QVERIFY(L10n::isGerman());
    }

    void aPickerIsAGroupOfRadioButtons()
    {
        const RenderedScene scene(
            "SegmentedPicker { x: 20; y: 20; width: 304; name: 'Language'\n"
            "options: ['de-DE', 'en-US', 'auto']; titles: ['Deutsch', 'English', 'Automatic']\n"
            "selection: 'en-US'; onSelected: option => selection = option }");
        QAccessibleInterface *const group =
            scene.accessible(QAccessible::Grouping, QStringLiteral("Language"));
        QVERIFY2(group, qPrintable(scene.accessibleTree()));
        const auto segment = [&scene](const char *name) {
            return scene.accessible(QAccessible::RadioButton, QString::fromLatin1(name));
        };
        QVERIFY(segment("Deutsch") && segment("English") && segment("Automatic"));
        QCOMPARE(segment("Deutsch")->parent(), group);
        QVERIFY(segment("English")->state().checked);
        scene.click({60, 34});
        QCOMPARE(scene.root().property("selection").toString(), QStringLiteral("de-DE"));
        QVERIFY(segment("Deutsch")->state().checked);
        QVERIFY(!segment("English")->state().checked);
        scene.press(Qt::Key_Tab);
        scene.press(Qt::Key_Right);
        scene.press(Qt::Key_Right);
        QVERIFY(segment("Automatic")->state().focused);
        scene.press(Qt::Key_Return);
        QCOMPARE(scene.root().property("selection").toString(), QStringLiteral("auto"));
        segment("English")->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(scene.root().property("selection").toString(), QStringLiteral("en-US"));
        scene.root().setEnabled(false);
        scene.click({60, 34});
        QCOMPARE(scene.root().property("selection").toString(), QStringLiteral("en-US"));
    }

    void aSwitchIsACheckBox()
    {
        const RenderedScene scene(
            "ToggleSwitch { x: 20; y: 20; width: 300; text: 'Auto-transcribe'; isOn: false\n"
            "onToggled: value => isOn = value }");
        QAccessibleInterface *const box =
            scene.accessible(QAccessible::CheckBox, QStringLiteral("Auto-transcribe"));
        QVERIFY2(box, qPrintable(scene.accessibleTree()));
        QVERIFY(box->state().checkable);
        QVERIFY(!box->state().checked);
        scene.click(scene.root());
        QVERIFY(box->state().checked);
        QVERIFY(waitUntil([&] { return test::isNear(scene.colorAt({288, 30}), purple, 10); }));
        scene.press(Qt::Key_Tab);
        QVERIFY(box->state().focused);
        scene.press(Qt::Key_Space);
        QVERIFY(!box->state().checked);
        box->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
        QVERIFY(box->state().checked);
        scene.root().setEnabled(false);
        scene.click(scene.root());
        QVERIFY(box->state().checked);
        QVERIFY(box->state().disabled);
    }

    void anEmptyStateHasItsMeasures()
    {
        const RenderedScene scene(
            "EmptyState { width: 400; height: 300; title: 'No Results'; hint: 'Try another.'\n"
            "symbol: 'waveform.slash'; symbolSize: 35; diameter: 80 }");
        QQuickItem *const title = textItem(scene.root(), QStringLiteral("No Results"));
        QQuickItem *const hint = textItem(scene.root(), QStringLiteral("Try another."));
        QQuickItem *const circle = descendant(scene.root(), "talvenor::GradientFill");
        QVERIFY(title && hint && circle);
        const QRectF round = RenderedScene::rect(*circle);
        const QRectF words = RenderedScene::rect(*title);
        const QRectF more = RenderedScene::rect(*hint);
        QCOMPARE(round.size(), QSizeF(80, 80));
        QVERIFY(std::abs(round.center().x() - 200) <= 0.5);
        QCOMPARE(words.top() - round.bottom(), 16.0);
        QCOMPARE(more.top() - words.bottom(), 4.0);
        // The room above and below is equal.
        QVERIFY(std::abs(round.top() - (300 - more.bottom())) <= 1);
        TALVENOR_COMPARE_COLOR(scene.colorAt({200, round.top() + 6}),
                               RenderedScene::over(at(purple, 0.08), lightWindow));
        QCOMPARE(title->property("color").value<QColor>(), lightSecondary);
        QCOMPARE(hint->property("color").value<QColor>(), scene.themeColor("tertiary"));
        QVERIFY(scene.accessible(QAccessible::StaticText, QStringLiteral("No Results")));
    }

    void aBadgeIsAWordOnItsCapsule()
    {
        const RenderedScene scene("Badge { x: 20; y: 20; text: 'Premium'; foreground: Theme.systemPurple }");
        QQuickItem *const text = textItem(scene.root(), QStringLiteral("Premium"));
        QVERIFY(text);
        const QRectF outer = RenderedScene::rect(scene.root());
        QVERIFY(std::abs(outer.width() - text->implicitWidth() - 12) <= 1);
        QVERIFY(std::abs(outer.height() - text->implicitHeight() - 4) <= 1);
        QCOMPARE(text->property("font").value<QFont>().weight(), QFont::DemiBold);
        TALVENOR_COMPARE_COLOR(scene.colorAt({outer.left() + 4, outer.center().y()}),
                               RenderedScene::over(at(scene.themeColor("systemPurple"), 0.15), lightWindow));
        TALVENOR_COMPARE_COLOR(scene.colorAt(outer.topLeft() + QPointF(1, 1)), lightWindow, 3);
    }

    void megabytesInALabelCostNothing()
    {
        const RenderedScene scene("Item { property string name: 'x'\n"
                                  "ActionButton { objectName: 'button'; width: 200; title: parent.name }\n"
                                  "Badge { y: 50; width: 100; text: parent.name; foreground: Theme.red } }");
        const double height = scene.item(QStringLiteral("button")).height();
        QElapsedTimer clock;
        clock.start();
        QVERIFY(scene.root().setProperty("name", QString(u"line\nمرحبا\t🎙"_qs).repeated(400'000)));
        QVERIFY(!scene.grab().isNull());
        QVERIFY2(clock.elapsed() < 2'000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(scene.item(QStringLiteral("button")).height(), height);
    }
};

TALVENOR_SCREEN_TEST_MAIN(ControlsTest)
#include "ControlsTest.moc"
