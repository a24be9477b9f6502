#include "RenderedScene.h"
#include "SidebarFixture.h"
#include "recorderfakes/RecorderFixture.h"
#include "screens/ContentState.h"
#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "support/Await.h"

#include <QFont>
#include <QTest>

using namespace talvenor;
using test::RecorderFixture;
using test::RenderedScene;
using test::waitUntil;

namespace {

const QColor purple(107, 92, 232);
const QColor blue(10, 133, 227);
const QSize smallestWindow(960, 640);
const QSize usualWindow(1100, 720);

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

/// The root view over the program's state, with nobody signed in to begin with unless the fixture has.
struct Root
{
    explicit Root(QSize size = smallestWindow)
        : scene("ContentView {}", size, {{QStringLiteral("content"), QVariant::fromValue(&content)}})
    {
        settle();
    }

    /// Lets the parts take their places.
    void settle() const { (void)scene.grab(); }

    /// The screen that is shown now, by the type's name.
    [[nodiscard]] bool shows(const char *name) const { return scene.object(QString::fromLatin1(name)); }

    [[nodiscard]] QQuickItem &item(const char *name) const { return scene.item(QString::fromLatin1(name)); }

    /// Clicks on an item of the tool bar and waits for the sheet.
    void open(const char *item, const char *sheet) const
    {
        scene.click(this->item(item));
        waitForSheet(sheet);
    }

    void waitForSheet(const char *sheet) const
    {
        QVERIFY2(waitUntil([&] { return isOpen(sheet); }), sheet);
        settle();
    }

    [[nodiscard]] bool isOpen(const char *sheet) const
    {
        const QObject *const object = scene.object(QString::fromLatin1(sheet));
        return object && object->property("opened").toBool();
    }

    void waitForEnd(const char *sheet) const
    {
        QVERIFY2(waitUntil([&] { return !scene.object(QString::fromLatin1(sheet)); }), sheet);
    }

    [[nodiscard]] bool hasText(const QString &text) const
    {
        return scene.accessible(QAccessible::StaticText, text) != nullptr;
    }

    [[nodiscard]] bool press(const QString &button) const
    {
        QAccessibleInterface *const found = scene.accessible(QAccessible::Button, button);
        if (!found)
            return false;
        found->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        return true;
    }

    ContentState content;
    RenderedScene scene;
};

/// A machine on which the set-up is done.
struct Machine : RecorderFixture
{
    explicit Machine(bool hasCompletedSetup = true)
    {
        AppSettings::shared().setHasCompletedSetup(hasCompletedSetup);
    }

    void signInAs(const char *tier, const char *role = "user")
    {
        signIn({{QStringLiteral("subscription_tier"), QString::fromLatin1(tier)},
                {QStringLiteral("role"), QString::fromLatin1(role)}});
    }
};

} // namespace

/// The root view's routes, the tool bar, its sheets, the divider and the alert.
class MainContentTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theRouteFollowsTheSession()
    {
        Machine machine;
        const Root root;
        QVERIFY(root.shows("email"));
        QVERIFY(!root.shows("toolBar"));
        machine.signInAs("free");
        QVERIFY(waitUntil([&] { return root.shows("toolBar") && !root.shows("email"); }));
        machine.signOut();
        QVERIFY(waitUntil([&] { return root.shows("email") && !root.shows("toolBar"); }));
    }

    void aSessionThatIsThereAtTheStartShowsTheMainWindow()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root;
        QVERIFY(root.shows("toolBar"));
        QVERIFY(!root.shows("email"));
    }

    void theToolBarsItemsStandInTheirOrder()
    {
        Machine machine;
        machine.signInAs("premium", "admin");
        const Root root;
        double last = 0;
        for (const char *const name : {"admin", "plans", "account", "settings"}) {
            const QRectF rect = RenderedScene::rect(root.item(name));
            QVERIFY2(root.item(name).isVisible() && rect.left() >= last && rect.right() <= 960, name);
            last = rect.right();
        }
        QCOMPARE(RenderedScene::rect(root.item("toolBar")).height(), 52.0);
    }

    void onlyAnAdministratorHasTheConsole()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root;
        QVERIFY(!root.item("admin").isVisible());
        machine.signInAs("free", "admin");
        QVERIFY(root.item("admin").isVisible());
        QCOMPARE(root.item("admin").property("color").value<QColor>(), root.scene.themeColor("orange"));
    }

    void plansHaveTheAccentColourForAFreeUserOnly_data()
    {
        QTest::addColumn<QByteArray>("tier");
        QTest::addColumn<bool>("isAccent");
        QTest::newRow("free") << QByteArray("free") << true;
        QTest::newRow("basic") << QByteArray("basic") << false;
        QTest::newRow("premium") << QByteArray("premium") << false;
        QTest::newRow("lifetime") << QByteArray("lifetime") << false;
    }

    void plansHaveTheAccentColourForAFreeUserOnly()
    {
        QFETCH(const QByteArray, tier);
        QFETCH(const bool, isAccent);
        Machine machine;
        machine.signInAs(tier.constData());
        Root root;
        for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
            root.scene.setScheme(scheme);
            const QColor expected = isAccent ? purple : root.scene.themeColor("secondary");
            const QRectF rect = RenderedScene::rect(root.item("plans"));
            // Somewhere in the word's thick strokes the colour is there undiluted.
            QVERIFY(isOnScreen(root.scene, rect, expected));
            QVERIFY(!isOnScreen(root.scene, rect, isAccent ? root.scene.themeColor("secondary") : purple));
        }
        QCOMPARE(root.item("plans").property("font").value<QFont>().pixelSize(), 12);
        QCOMPARE(root.item("plans").property("font").value<QFont>().weight(), QFont::Medium);
    }

    void withoutAProfileThereIsNoBadgeAndPlansAreSecondary()
    {
        Machine machine;
        machine.signInAs("free");
        Root root;
        QVERIFY(root.item("accountBadge").isVisible());
        QCOMPARE(root.item("plans").property("color").value<QColor>(), purple);
        machine.signOut(); // which takes the profile away before the screen goes
        QVERIFY(!root.content.currentUser().isValid());
    }

    void theBadgeHasThePlansNameAndColour_data()
    {
        QTest::addColumn<QByteArray>("tier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("color");
        QTest::newRow("free") << QByteArray("free") << QStringLiteral("Free") << QByteArray("secondary");
        QTest::newRow("basic") << QByteArray("basic") << QStringLiteral("Basic") << QByteArray("blue");
        QTest::newRow("premium") << QByteArray("premium") << QStringLiteral("Premium")
                                 << QByteArray("systemPurpleText");
        QTest::newRow("lifetime") << QByteArray("lifetime") << QStringLiteral("Lifetime")
                                  << QByteArray("secondary");
        QTest::newRow("unknown") << QByteArray("gold") << QStringLiteral("Free") << QByteArray("secondary");
    }

    void theBadgeHasThePlansNameAndColour()
    {
        QFETCH(const QByteArray, tier);
        QFETCH(const QString, name);
        QFETCH(const QByteArray, color);
        Machine machine;
        machine.signInAs(tier.constData());
        Root root;
        for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
            root.scene.setScheme(scheme);
            const QColor expected = root.scene.themeColor(color.constData());
            if (tier == "basic")
                QCOMPARE(expected, blue);
            const QRectF rect = RenderedScene::rect(root.item("accountBadge"));
            // Within the padding there is nothing but the capsule; the corner of its box is outside of it.
            const QImage picture = root.scene.grab();
            TALVENOR_COMPARE_COLOR(
                root.scene.colorAt(picture, {rect.left() + 3, rect.center().y()}),
                RenderedScene::over(withOpacity(expected, 0.15), root.scene.themeColor("windowBackground")));
            TALVENOR_COMPARE_COLOR(root.scene.colorAt(picture, rect.topLeft() + QPointF(0.5, 0.5)),
                                   root.scene.themeColor("windowBackground"), 3);
            QVERIFY(isOnScreen(root.scene, rect, expected));
        }
        QAccessibleInterface *const account =
            root.scene.accessible(QAccessible::Button, QStringLiteral("My Account"));
        QVERIFY(account);
        QCOMPARE(account->text(QAccessible::Description), name);
    }

    void itemsAreNamedAndExplainedInBothLanguages()
    {
        Machine machine;
        machine.signInAs("free", "admin");
        const Root root;
        const auto check = [&](const char *item, const QString &spoken, const QString &tooltip) {
            QVERIFY2(root.scene.accessible(QAccessible::Button, spoken), qPrintable(spoken));
            QCOMPARE(root.item(item).property("tooltip").toString(), tooltip);
        };
        check("admin", QStringLiteral("Admin Panel"), QStringLiteral("Admin Panel"));
        check("plans", QStringLiteral("Plans"), QStringLiteral("Subscription Plans"));
        check("account", QStringLiteral("My Account"), QStringLiteral("My Account"));
        check("settings", QStringLiteral("Settings"), QString());
        RenderedScene::setLanguage(AppLanguage::german);
        check("admin", QStringLiteral("Admin-Panel"), QStringLiteral("Admin-Panel"));
        check("plans", QStringLiteral("Plans"), QStringLiteral("Abo-Pläne"));
        check("account", QStringLiteral("Mein Konto"), QStringLiteral("Mein Konto"));
        check("settings", QStringLiteral("Einstellungen"), QString());
    }

    void eachItemOpensItsSheet()
    {
        Machine machine;
        machine.signInAs("free", "admin");
        const Root root;
        struct Opening
        {
            const char *item;
            const char *sheet;
            const char *title;
        };
        for (const auto &[item, sheet, title] : {Opening{"admin", "AdminView", "Admin Panel"},
                                                 Opening{"plans", "SubscriptionView", "Choose Plan"},
                                                 Opening{"account", "AccountView", "My Account"},
                                                 Opening{"settings", "SettingsView", "Settings"}}) {
            root.open(item, sheet);
            QVERIFY2(root.scene.accessible(QAccessible::Dialog, QString::fromLatin1(title)), title);
            root.scene.press(Qt::Key_Escape);
            root.waitForEnd(sheet);
            // And anew.
            root.open(item, sheet);
            QVERIFY(root.press(QStringLiteral("Close")));
            root.waitForEnd(sheet);
        }
    }

    void theRecordScreenLeadsToThePlansToo()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root;
        QVERIFY(root.press(QStringLiteral("Upgrade to Premium")));
        root.waitForSheet("SubscriptionView");
    }

    void aKeyTooManyAfterOpeningASheetDoesNothing()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root;
        for (const auto &[item, sheet] :
             {std::pair("account", "AccountView"), std::pair("settings", "SettingsView")}) {
            root.item(item).forceActiveFocus(Qt::TabFocusReason);
            root.scene.press(Qt::Key_Return);
            root.waitForSheet(sheet);
            root.scene.press(Qt::Key_Return);
            root.scene.press(Qt::Key_Space);
            QVERIFY(AuthService::shared().isLoggedIn());
            QVERIFY(root.isOpen(sheet));
            // The keyboard comes to the close button first.
            root.scene.press(Qt::Key_Tab);
            root.scene.press(Qt::Key_Return);
            root.waitForEnd(sheet);
        }
    }

    void plansAreExplainedWhileThePointerRestsOnThem()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root;
        root.scene.hover(RenderedScene::rect(root.item("plans")).center());
        const QObject *const tip = root.item("plans").findChild<QObject *>(QStringLiteral("tooltip"));
        QVERIFY(tip);
        QVERIFY(waitUntil([&] { return tip->property("visible").toBool(); }));
        QCOMPARE(tip->property("text").toString(), QStringLiteral("Subscription Plans"));
        root.scene.hover({600, 400});
        QVERIFY(waitUntil([&] { return !tip->property("visible").toBool(); }));
    }

    void theSettingsChangeTheLanguageOfEverything()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root;
        root.open("settings", "SettingsView");
        QVERIFY(root.scene.accessible(QAccessible::Grouping, QStringLiteral("App Language")));
        root.scene.accessible(QAccessible::RadioButton, QStringLiteral("Deutsch"))
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(AppSettings::shared().appLanguage(), AppLanguage::german);
        QVERIFY(root.hasText(QStringLiteral("Einstellungen")));
        QVERIFY(root.hasText(QStringLiteral("Bereit zur Aufnahme")));
    }

    void theAccountSheetTellsWhoIsSignedIn()
    {
        Machine machine;
        machine.signIn({{QStringLiteral("subscription_tier"), QStringLiteral("basic")},
                        {QStringLiteral("recordings_count"), 7}});
        const Root root;
        root.open("account", "AccountView");
        for (const char *const text : {"My Account", "Anna", "anna@example.invalid", "Basic", "7"})
            QVERIFY2(root.hasText(QString::fromLatin1(text)), qPrintable(root.scene.accessibleTree()));
    }

    void theSubscriptionSheetTellsPlanAndLimit_data()
    {
        QTest::addColumn<QByteArray>("tier");
        QTest::addColumn<int>("limit");
        QTest::addColumn<QString>("plan");
        QTest::addColumn<QString>("told");
        QTest::newRow("free") << QByteArray("free") << 5 << QStringLiteral("Free") << QStringLiteral("5");
        QTest::newRow("no limit told")
            << QByteArray("free") << -1 << QStringLiteral("Free") << QStringLiteral("3");
        QTest::newRow("basic") << QByteArray("basic") << 25 << QStringLiteral("Basic")
                               << QStringLiteral("25");
        QTest::newRow("premium") << QByteArray("premium") << -1 << QStringLiteral("Premium")
                                 << QStringLiteral("Unlimited");
    }

    void theSubscriptionSheetTellsPlanAndLimit()
    {
        QFETCH(const QByteArray, tier);
        QFETCH(const int, limit);
        QFETCH(const QString, plan);
        QFETCH(const QString, told);
        Machine machine;
        machine.signIn({{QStringLiteral("subscription_tier"), QString::fromLatin1(tier)},
                        {QStringLiteral("recordings_limit"), limit >= 0 ? QJsonValue(limit) : QJsonValue()}});
        const Root root;
        root.open("plans", "SubscriptionView");
        QVERIFY2(root.hasText(plan) && root.hasText(told), qPrintable(root.scene.accessibleTree()));
    }

    void signingOutInTheAccountSheetTakesTheSheetWithIt()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root;
        root.open("account", "AccountView");
        QVERIFY(root.press(QStringLiteral("Sign Out")));
        QVERIFY(!AuthService::shared().isLoggedIn());
        QVERIFY(waitUntil([&] { return root.shows("email"); }));
        root.waitForEnd("AccountView");
        machine.signInAs("free");
        QVERIFY(waitUntil([&] { return root.shows("toolBar"); }));
        QTest::qWait(0);
        QVERIFY(!root.shows("AccountView"));
    }

    void aSessionThatEndsUnderASheetLeavesNoSheetForTheNextOne()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root;
        root.open("settings", "SettingsView");
        machine.signOut();
        root.waitForEnd("SettingsView");
        machine.signInAs("free");
        QVERIFY(waitUntil([&] { return root.shows("toolBar"); }));
        QTest::qWait(0);
        QVERIFY(!root.shows("SettingsView"));
    }

    void theSetUpComesAfterTheSignInAndNotBefore()
    {
        Machine machine(false);
        const Root root;
        QTest::qWait(0);
        QVERIFY(!root.content.isSetupPresented());
        QVERIFY(!root.shows("SetupView"));
        machine.signInAs("free");
        root.waitForSheet("SetupView");
        QVERIFY(root.hasText(QStringLiteral("Welcome to Talvenor")));
        QVERIFY(!AppSettings::shared().hasCompletedSetup());
    }

    void anyWayOfClosingTheSetUpCompletesIt_data()
    {
        QTest::addColumn<bool>("byEscape");
        QTest::newRow("Escape") << true;
        QTest::newRow("its button") << false;
    }

    void anyWayOfClosingTheSetUpCompletesIt()
    {
        QFETCH(const bool, byEscape);
        Machine machine(false);
        machine.signInAs("free");
        const Root root;
        root.waitForSheet("SetupView");
        if (byEscape)
            root.scene.press(Qt::Key_Escape);
        else
            QVERIFY(root.press(QStringLiteral("Let's Go")));
        root.waitForEnd("SetupView");
        QVERIFY(AppSettings::shared().hasCompletedSetup());
        machine.signOut();
        machine.signInAs("free");
        QVERIFY(waitUntil([&] { return root.shows("toolBar"); }));
        QTest::qWait(0);
        QVERIFY(!root.shows("SetupView"));
    }

    void aSessionThatEndsUnderTheSetUpDoesNotCompleteIt()
    {
        Machine machine(false);
        machine.signInAs("free");
        const Root root;
        root.waitForSheet("SetupView");
        machine.signOut();
        root.waitForEnd("SetupView");
        QVERIFY(!AppSettings::shared().hasCompletedSetup());
        machine.signInAs("free");
        root.waitForSheet("SetupView");
    }

    void signingOutWhileRecordingShowsTheFormAndTheRecordingGoesOn()
    {
        Machine machine;
        machine.signInAs("premium");
        Root root;
        root.content.record()->toggleRecording();
        QVERIFY(waitUntil([&] { return root.content.record()->isRecording(); }));
        root.open("account", "AccountView");
        QVERIFY(root.press(QStringLiteral("Sign Out")));
        QVERIFY(waitUntil([&] { return root.shows("email"); }));
        QVERIFY(root.content.record()->isRecording());
        machine.signIn({{QStringLiteral("email"), QStringLiteral("other@example.invalid")}});
        QVERIFY(waitUntil([&] { return root.shows("toolBar"); }));
        QCOMPARE(root.content.recordings()->rowCount(), 1);
        QVERIFY(root.content.record()->isRecording());
        root.content.record()->toggleRecording();
    }

    void theListTellsOfTheRowsThatAreThere()
    {
        Machine machine;
        machine.writeList(test::numberedRecordings(3));
        machine.signInAs("free");
        Root root;
        QAccessibleInterface *const list =
            root.scene.accessible(QAccessible::List, QStringLiteral("Recordings"));
        QVERIFY(list);
        QCOMPARE(list->childCount(), 3);
        // Rows that are out of use wait to be used again, which is nobody's business.
        QVERIFY(root.content.recordings()->setProperty("searchText", QStringLiteral("Meeting 1")));
        QVERIFY(waitUntil([&] {
            root.settle();
            return list->childCount() == 1;
        }));
        QCOMPARE(list->child(0)->text(QAccessible::Name), QStringLiteral("Meeting 1"));
        QVERIFY(root.content.recordings()->setProperty("searchText", QString()));
        QVERIFY(waitUntil([&] {
            root.settle();
            return list->childCount() == 3;
        }));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(list->child(i)->text(QAccessible::Name), QStringLiteral("Meeting %1").arg(i));
    }

    void theDividerMovesTheSidebarWithinItsBounds()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root(usualWindow);
        const QQuickItem &sidebar = root.item("sidebar");
        QCOMPARE(sidebar.width(), 300.0);
        dragDivider(root, 300, 400);
        QCOMPARE(sidebar.width(), 400.0);
        QCOMPARE(RenderedScene::rect(root.item("toolBar")).left(), 401.0);
        dragDivider(root, 400, 20);
        QCOMPARE(sidebar.width(), 280.0);
        dragDivider(root, 280, 1000);
        QCOMPARE(sidebar.width(), 480.0);
        // A smaller window leaves the pane the room that it needs, and gives the width back later.
        root.scene.root().setSize(smallestWindow);
        QCOMPARE(sidebar.width(), 400.0);
        root.scene.root().setSize(usualWindow);
        QCOMPARE(sidebar.width(), 480.0);
    }

    void everyWindowSizeIsFilled()
    {
        Machine machine;
        machine.signInAs("free");
        const Root root;
        for (const QSize &size : {smallestWindow, QSize(3840, 2160)}) {
            root.scene.root().setSize(size);
            root.settle();
            QCOMPARE(RenderedScene::rect(root.item("toolBar")).right(), double(size.width()));
            QCOMPARE(RenderedScene::rect(root.item("sidebar")).bottom(), double(size.height()));
        }
    }

    void theAlertHasTheErrorsTextAndOneButton()
    {
        Machine machine;
        machine.signIn({{QStringLiteral("can_record"), false}});
        Root root;
        root.content.record()->toggleRecording();
        root.waitForSheet("ErrorAlert");
        QVERIFY(root.hasText(QStringLiteral("Error")));
        QVERIFY(root.hasText(QStringLiteral("Recording limit reached. Please upgrade your plan.")));
        QVERIFY(root.press(QStringLiteral("OK")));
        QVERIFY(!root.content.showError());
        QVERIFY(waitUntil([&] { return !root.isOpen("ErrorAlert"); }));
        // It comes up again, and any way of closing it counts.
        root.content.record()->toggleRecording();
        root.waitForSheet("ErrorAlert");
        root.scene.press(Qt::Key_Escape);
        QVERIFY(waitUntil([&] { return !root.isOpen("ErrorAlert"); }));
        QVERIFY(!root.content.showError());
    }

    void aSessionThatEndsUnderTheAlertLeavesTheErrorForTheNextOne()
    {
        Machine machine;
        machine.signInAs("free");
        Root root;
        root.content.viewModel().setShowError(true);
        root.waitForSheet("ErrorAlert");
        machine.signOut();
        root.waitForEnd("ErrorAlert");
        QVERIFY(root.content.showError()); // nobody has seen it off
        machine.signInAs("free");
        root.waitForSheet("ErrorAlert");
        root.scene.press(Qt::Key_Escape);
        QVERIFY(waitUntil([&] { return !root.content.showError(); }));
    }

    void anErrorWithoutATextIsUnknown()
    {
        Machine machine;
        machine.signInAs("free");
        Root root;
        RenderedScene::setLanguage(AppLanguage::german);
        root.content.viewModel().setShowError(true);
        root.waitForSheet("ErrorAlert");
        QVERIFY(root.hasText(QStringLiteral("Fehler")));
        QVERIFY(root.hasText(QStringLiteral("Unbekannter Fehler")));
        QVERIFY(root.press(QStringLiteral("OK")));
    }

    void aNewerErrorReplacesTheTextWhileTheAlertIsUp()
    {
        Machine machine;
        machine.signIn({{QStringLiteral("can_record"), false}});
        Root root;
        root.content.record()->toggleRecording();
        root.waitForSheet("ErrorAlert");
        const QString first = root.content.errorMessage();
        machine.signIn({{QStringLiteral("can_record"), true}});
        machine.hasMicrophone = false;
        root.content.record()->toggleRecording();
        QVERIFY(waitUntil([&] { return root.content.errorMessage() != first; }));
        QVERIFY(root.isOpen("ErrorAlert"));
        QVERIFY(root.hasText(root.content.errorMessage()));
        QVERIFY(!root.hasText(first));
    }

    void aLongErrorLeavesTheButtonWithinReach()
    {
        const RenderedScene scene("Item { ErrorAlert { message: 'W'.repeat(100000); isPresented: true } }",
                                  smallestWindow);
        const auto button = [&]() -> QQuickItem * {
            QAccessibleInterface *const ok = scene.accessible(QAccessible::Button, QStringLiteral("OK"));
            return ok ? qobject_cast<QQuickItem *>(ok->object()) : nullptr;
        };
        QVERIFY(waitUntil([&] { return button() != nullptr; }));
        const QRectF window({0, 0}, QSizeF(smallestWindow));
        QVERIFY(waitUntil([&] {
            (void)scene.grab();
            return window.contains(RenderedScene::rect(*button()));
        }));
    }

private:
    /// True if a pixel within the rectangle has that colour.
    static bool isOnScreen(const RenderedScene &scene, const QRectF &rect, const QColor &color)
    {
        const QImage picture = scene.grab();
        const double step = 1 / picture.devicePixelRatio();
        for (double y = rect.top() + step / 2; y < rect.bottom(); y += step) {
            for (double x = rect.left() + step / 2; x < rect.right(); x += step) {
                if (test::isNear(scene.colorAt(picture, {x, y}), color, 6))
                    return true;
            }
        }
        return false;
    }

    static void dragDivider(const Root &root, int from, int to)
    {
        QQuickWindow &window = root.scene.window();
        QTest::mousePress(&window, Qt::LeftButton, Qt::NoModifier, {from, 300});
        QTest::mouseMove(&window, {(from + to) / 2, 320});
        QTest::mouseMove(&window, {to, 300});
        QTest::mouseRelease(&window, Qt::LeftButton, Qt::NoModifier, {to, 300});
        root.settle();
    }
};

TALVENOR_SCREEN_TEST_MAIN(MainContentTest)
#include "MainContentTest.moc"
