#include "RenderedScene.h"
#include "recorderfakes/RecorderFixture.h"
#include "screens/AppIcon.h"
#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "support/Await.h"

#include <QFont>
#include <QResource>
#include <QTest>

#include <cmath>

/// Runs it while the program has no icon among its resources. (Not in a namespace: the macros do not work
/// there.)
static void withoutIcon(const std::function<void()> &body)
{
    Q_CLEANUP_RESOURCE(talvenor_icon);
    body();
    Q_INIT_RESOURCE(talvenor_icon);
}

using namespace talvenor;
using test::RecorderFixture;
using test::RenderedScene;
using test::waitUntil;

namespace {

const QColor purple(107, 92, 232);
const QColor blue(10, 133, 227);
const QSize windowSize(1100, 720);

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

QJsonObject accepted()
{
    return {
        {QStringLiteral("token"), QStringLiteral("t")},
        {QStringLiteral("user"), QJsonObject{{QStringLiteral("id"), 1},
                                             {QStringLiteral("email"), QStringLiteral("ann@example.com")},
                                             {QStringLiteral("name"), QStringLiteral("Ann")},
                                             {QStringLiteral("role"), QStringLiteral("user")},
                                             {QStringLiteral("subscription_tier"), QStringLiteral("free")},
                                             {QStringLiteral("recordings_count"), 0}}}};
}

QJsonObject refusal(const QString &text)
{
    return {{QStringLiteral("error"), text}};
}

/// The text of a field that the label `name` belongs to.
void fill(const RenderedScene &scene, const char *name, const QString &text)
{
    QVERIFY(scene.item(QString::fromLatin1(name)).setProperty("text", text));
}

int fontSize(const QQuickItem &item)
{
    return item.property("font").value<QFont>().pixelSize();
}

/// What the window shows at this place behind everything else of the sign-in screen.
QColor backgroundAt(const RenderedScene &scene, QPointF point, bool isDark)
{
    const QPointF centre(scene.root().width() / 2, scene.root().height() / 2);
    const double distance = std::hypot(point.x() - centre.x(), point.y() - centre.y());
    const double share = std::clamp((400 - distance) / 350, 0.0, 1.0);
    return RenderedScene::over(withOpacity(purple, (isDark ? 0.08 : 0.04) * share),
                               scene.themeColor("windowBackground"));
}

/// The accent gradient of a button of this size, at a place in it.
QColor gradientAt(QSizeF size, QPointF point)
{
    // The end points are the corners, so the share is the projection onto the diagonal.
    const double share = (point.x() * size.width() + point.y() * size.height()) /
                         (size.width() * size.width() + size.height() * size.height());
    const auto channel = [share](int from, int to) { return qRound(from + (to - from) * share); };
    return {channel(purple.red(), blue.red()), channel(purple.green(), blue.green()),
            channel(purple.blue(), blue.blue())};
}

double gapBelow(const QQuickItem &above, const QQuickItem &below)
{
    return RenderedScene::rect(below).top() - RenderedScene::rect(above).bottom();
}

bool isFormOpen(const RenderedScene &scene)
{
    return scene.object(QStringLiteral("registerForm")) != nullptr;
}

/// Does what a screen reader's user does with a button.
bool press(QAccessibleInterface *button)
{
    if (!button)
        return false;
    button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    return true;
}

/// A part of the registration form.
QQuickItem &formItem(const RenderedScene &scene, const char *name)
{
    auto *const item =
        scene.item(QStringLiteral("registerForm")).findChild<QQuickItem *>(QString::fromLatin1(name));
    if (!item)
        qFatal("the form has no \"%s\"", name);
    return *item;
}

bool hasFocus(const RenderedScene &scene, const QQuickItem &item)
{
    const QQuickItem *const focused = scene.window().activeFocusItem();
    return focused && (focused == &item || item.isAncestorOf(focused));
}

void openForm(const RenderedScene &scene)
{
    scene.click(scene.item(QStringLiteral("signUp")));
    QVERIFY(waitUntil([&] {
        const QObject *const sheet = scene.object(QStringLiteral("registerSheet"));
        return sheet && sheet->property("opened").toBool();
    }));
    (void)scene.grab(); // the parts take their places as they are drawn
}

void fillForm(const RenderedScene &scene, const QString &password, const QString &confirmation)
{
    formItem(scene, "name").setProperty("text", QStringLiteral("Ann"));
    formItem(scene, "email").setProperty("text", QStringLiteral("ann@example.com"));
    formItem(scene, "password").setProperty("text", password);
    formItem(scene, "confirmPassword").setProperty("text", confirmation);
    (void)scene.grab();
}

} // namespace

/// The sign-in screen and the registration sheet, as they are seen and operated.
class SignInScreensTest : public QObject
{
    Q_OBJECT

    static constexpr const char *login = "LoginView {}";

private Q_SLOTS:
    void theColumnStandsInTheMiddleWithItsSpacings()
    {
        RecorderFixture fixture;
        const RenderedScene scene(login, windowSize);
        const QQuickItem &column = scene.item(QStringLiteral("column"));
        QCOMPARE(column.width(), 340.0);
        const QPointF centre = RenderedScene::rect(column).center();
        QCOMPARE(centre.x(), 550.0);
        QVERIFY(std::abs(centre.y() - 360) <= 0.5);
        QCOMPARE(gapBelow(scene.item(QStringLiteral("header")), scene.item(QStringLiteral("form"))), 32.0);
        QCOMPARE(gapBelow(scene.item(QStringLiteral("form")), scene.item(QStringLiteral("actions"))), 32.0);
        QCOMPARE(gapBelow(scene.item(QStringLiteral("email")), scene.item(QStringLiteral("password"))), 14.0);
        QCOMPARE(RenderedScene::rect(scene.item(QStringLiteral("icon"))).size(), QSizeF(80, 80));
        QCOMPARE(fontSize(scene.item(QStringLiteral("title"))), 25);
    }

    void inTheSmallestWindowEverythingIsThere()
    {
        RecorderFixture fixture;
        const RenderedScene scene(login, {500, 600});
        const QRectF column = RenderedScene::rect(scene.item(QStringLiteral("column")));
        QVERIFY(std::abs(column.center().x() - 250) <= 0.5 && std::abs(column.center().y() - 300) <= 0.5);
        QVERIFY(column.top() > 24 && column.bottom() < 576);
    }

    void theBackgroundGlows_data()
    {
        QTest::addColumn<bool>("isDark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }

    void theBackgroundGlows()
    {
        QFETCH(const bool, isDark);
        RecorderFixture fixture;
        RenderedScene scene(login, windowSize);
        scene.setScheme(isDark ? ColorScheme::dark : ColorScheme::light);
        const QImage picture = scene.grab();
        for (const QPointF &point :
             {QPointF(350, 360), QPointF(760, 300), QPointF(200, 300), QPointF(10, 10)})
            TALVENOR_COMPARE_COLOR(scene.colorAt(picture, point), backgroundAt(scene, point, isDark), 1);
        // A field lies on it as a trace of white or black.
        const QRectF field = RenderedScene::rect(scene.item(QStringLiteral("password")));
        const QPointF inField(field.right() - 20, field.bottom() - 8);
        TALVENOR_COMPARE_COLOR(
            scene.colorAt(picture, inField),
            RenderedScene::over(isDark ? withOpacity(Qt::white, 0.06) : withOpacity(Qt::black, 0.04),
                                backgroundAt(scene, inField, isDark)),
            1);
        // Its corners are rounded.
        const QPointF corner(field.right() - 0.75, field.bottom() - 0.75);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, corner), backgroundAt(scene, corner, isDark), 1);
    }

    void theButtonIsDimmedWhileAFieldIsEmpty_data() { theBackgroundGlows_data(); }

    void theButtonIsDimmedWhileAFieldIsEmpty()
    {
        QFETCH(const bool, isDark);
        RecorderFixture fixture;
        RenderedScene scene(login, windowSize);
        scene.setScheme(isDark ? ColorScheme::dark : ColorScheme::light);
        const QQuickItem &submit = scene.item(QStringLiteral("submit"));
        const QRectF rect = RenderedScene::rect(submit);
        QCOMPARE(rect.width(), 340.0);
        // The label's line with 12 above and below it.
        QCOMPARE(rect.height(), 24 + submit.property("implicitContentHeight").toReal());
        QCOMPARE(fontSize(submit), 15);
        QCOMPARE(submit.property("font").value<QFont>().weight(), QFont::DemiBold);
        const QPointF inside(20, 20);
        const QPointF point = rect.topLeft() + inside;
        QVERIFY(!submit.isEnabled());
        TALVENOR_COMPARE_COLOR(scene.colorAt(point),
                               RenderedScene::over(withOpacity(gradientAt(rect.size(), inside), 0.6),
                                                   backgroundAt(scene, point, isDark)));
        fill(scene, "email", QStringLiteral("a"));
        QVERIFY(!submit.isEnabled());
        QCOMPARE(submit.opacity(), 0.6);
        fill(scene, "password", QStringLiteral("b"));
        QVERIFY(submit.isEnabled());
        TALVENOR_COMPARE_COLOR(scene.colorAt(point), gradientAt(rect.size(), inside));
        fill(scene, "email", {});
        QVERIFY(!submit.isEnabled());
        QCOMPARE(submit.opacity(), 0.6);
    }

    void whileTheAnswerIsOutTheButtonTurnsAtFullOpacityAndCannotBeClicked()
    {
        RecorderFixture fixture;
        fixture.service->hold(QStringLiteral("POST /auth/login"));
        fixture.service->answer(QStringLiteral("POST /auth/login"), 403,
                                refusal(QStringLiteral("Not today.")));
        const RenderedScene scene(login, windowSize);
        fill(scene, "email", QStringLiteral("ann@example.com"));
        fill(scene, "password", QStringLiteral("secret"));
        const QQuickItem &submit = scene.item(QStringLiteral("submit"));
        const double height = submit.height();
        scene.click(submit);
        QVERIFY(waitUntil([&] { return submit.property("isBusy").toBool(); }));
        QVERIFY(!submit.isEnabled());
        QCOMPARE(submit.opacity(), 1.0);
        QCOMPARE(submit.height(), height);
        scene.click(submit);
        scene.click(submit);
        // The label has made room for the spinner: white only where that is.
        const QImage picture = scene.grab();
        const QPointF middle = RenderedScene::rect(submit).center();
        int white = 0;
        for (double x = -60; x <= 60; x += 0.5) {
            const QColor color = scene.colorAt(picture, middle + QPointF(x, 0));
            const bool isWhite = color.red() > 200 && color.green() > 200;
            QVERIFY(!isWhite || std::abs(x) <= 9);
            white += isWhite ? 1 : 0;
        }
        const QVariant fields = scene.item(QStringLiteral("email")).property("text");
        fixture.service->release(QStringLiteral("POST /auth/login"));
        const QQuickItem &error = scene.item(QStringLiteral("error"));
        QVERIFY(waitUntil([&] { return error.isVisible(); }));
        (void)scene.grab();
        QCOMPARE(fixture.service->requests(QStringLiteral("POST /auth/login")).size(), 1);
        QCOMPARE(scene.item(QStringLiteral("email")).property("text"), fields);
        QCOMPARE(scene.item(QStringLiteral("password")).property("text").toString(),
                 QStringLiteral("secret"));
        QVERIFY(submit.isEnabled());
    }

    void theErrorIsTheServicesTextInRedAtTheLeftAndGoesWithTheNextAttempt()
    {
        RecorderFixture fixture;
        const QString text = QStringLiteral("This account is asleep.");
        fixture.service->answer(QStringLiteral("POST /auth/login"), 403, refusal(text));
        const RenderedScene scene(login, windowSize);
        QQuickItem &error = scene.item(QStringLiteral("error"));
        QVERIFY(!error.isVisible());
        fill(scene, "email", QStringLiteral("ann@example.com"));
        fill(scene, "password", QStringLiteral("secret"));
        scene.click(scene.item(QStringLiteral("submit")));
        QVERIFY(waitUntil([&] { return error.isVisible(); }));
        (void)scene.grab();
        QVERIFY2(error.property("text").toString().contains(text),
                 qPrintable(error.property("text").toString()));
        QCOMPARE(error.property("color").value<QColor>(), scene.themeColor("redText"));
        QCOMPARE(fontSize(error), 12);
        QCOMPARE(error.width(), 340.0);
        QCOMPARE(gapBelow(scene.item(QStringLiteral("password")), error), 14.0);
        QCOMPARE(gapBelow(error, scene.item(QStringLiteral("actions"))), 32.0);
        QVERIFY(scene.accessible(QAccessible::StaticText, error.property("text").toString()));

        fixture.service->hold(QStringLiteral("POST /auth/login"));
        scene.click(scene.item(QStringLiteral("submit")));
        QVERIFY(waitUntil([&] { return !error.isVisible(); }));
        fixture.service->release(QStringLiteral("POST /auth/login"));
        QVERIFY(waitUntil([&] { return error.isVisible(); }));
        (void)scene.grab();
    }

    void aLongErrorWrapsAndEverythingCanBeReached()
    {
        RecorderFixture fixture;
        fixture.service->answer(QStringLiteral("POST /auth/login"), 403,
                                refusal(QString(3000, u'W') + QStringLiteral("\n\n<b>x</b>")));
        const RenderedScene scene(login, {500, 600});
        fill(scene, "email", QStringLiteral("ann@example.com"));
        fill(scene, "password", QStringLiteral("secret"));
        scene.click(scene.item(QStringLiteral("submit")));
        QQuickItem &error = scene.item(QStringLiteral("error"));
        QVERIFY(waitUntil([&] { return error.isVisible(); }));
        (void)scene.grab();
        QCOMPARE(error.width(), 340.0);
        QVERIFY(error.property("contentWidth").toReal() <= 340);
        // What is outside of the window comes into it with the keyboard.
        const QRectF window({0, 0}, QSizeF(500, 600));
        for (const char *const part : {"email", "submit", "password"}) {
            QQuickItem &item = scene.item(QString::fromLatin1(part));
            item.forceActiveFocus(Qt::TabFocusReason);
            QVERIFY2(waitUntil([&] { return window.contains(RenderedScene::rect(item)); }), part);
        }
    }

    void returnSubmitsNothing()
    {
        RecorderFixture fixture;
        const RenderedScene scene(login, windowSize);
        fill(scene, "email", QStringLiteral("ann@example.com"));
        fill(scene, "password", QStringLiteral("secret"));
        for (const char *const field : {"email", "password"}) {
            scene.item(QString::fromLatin1(field)).forceActiveFocus();
            scene.press(Qt::Key_Return);
            scene.press(Qt::Key_Enter);
        }
        QCoreApplication::processEvents();
        QVERIFY(fixture.service->allRequests().isEmpty());
    }

    void bothLanguagesToTheLetter_data()
    {
        QTest::addColumn<AppLanguage>("language");
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<QStringList>("buttons");
        QTest::newRow("English") << AppLanguage::english
                                 << QStringList{QStringLiteral("Talvenor"),
                                                QStringLiteral("Sign in to continue"),
                                                QStringLiteral("E-Mail"), QStringLiteral("Password"),
                                                QStringLiteral("Don't have an account?")}
                                 << QStringList{QStringLiteral("Sign In"), QStringLiteral("Sign Up")};
        QTest::newRow("German") << AppLanguage::german
                                << QStringList{QStringLiteral("Talvenor"),
                                               QStringLiteral("Melde dich an, um fortzufahren"),
                                               QStringLiteral("E-Mail"), QStringLiteral("Passwort"),
                                               QStringLiteral("Noch kein Konto?")}
                                << QStringList{QStringLiteral("Anmelden"), QStringLiteral("Registrieren")};
    }

    void bothLanguagesToTheLetter()
    {
        QFETCH(const AppLanguage, language);
        QFETCH(const QStringList, labels);
        QFETCH(const QStringList, buttons);
        RecorderFixture fixture;
        const RenderedScene scene(login, windowSize);
        RenderedScene::setLanguage(language);
        for (const QString &label : labels)
            QVERIFY2(scene.accessible(QAccessible::StaticText, label), qPrintable(scene.accessibleTree()));
        for (const QString &button : buttons)
            QVERIFY2(scene.accessible(QAccessible::Button, button), qPrintable(scene.accessibleTree()));
    }

    void withoutAnIconASymbolStandsInForIt()
    {
        RecorderFixture fixture;
        const RenderedScene scene("LoginView { iconSource: '' }", windowSize);
        const QRectF rect = RenderedScene::rect(scene.item(QStringLiteral("icon")));
        QCOMPARE(rect.size(), QSizeF(100, 100));
        const QImage picture = scene.grab();
        // Between the symbol's corner and the circle's rim there is only the glow.
        const QPointF point = rect.center() + QPointF(27, 27);
        const double share = (50 - std::hypot(27, 27)) / 40;
        TALVENOR_COMPARE_COLOR(
            scene.colorAt(picture, point),
            RenderedScene::over(withOpacity(purple, 0.15 * share), backgroundAt(scene, point, false)), 3);
        // The symbol is there, in the accent colour.
        bool isThere = false;
        for (double x = -24; x <= 24; x += 0.5)
            isThere |= test::isNear(scene.colorAt(picture, rect.center() + QPointF(x, 0)), purple);
        QVERIFY(isThere);
    }

    void aProgramWhoseIconIsMissingStartsWithTheSymbol()
    {
        RecorderFixture fixture;
        const AppIcon icon;
        QVERIFY(icon.source().isValid());
        withoutIcon([&] {
            QVERIFY(icon.source().isEmpty());
            const RenderedScene scene(login, windowSize);
            QCOMPARE(RenderedScene::rect(scene.item(QStringLiteral("icon"))).size(), QSizeF(100, 100));
        });
    }

    void registrationIsASheetOfItsOwnSize()
    {
        RecorderFixture fixture;
        const RenderedScene scene(login, windowSize);
        openForm(scene);
        QCOMPARE(RenderedScene::rect(scene.item(QStringLiteral("registerForm"))),
                 QRectF((1100 - 483) / 2.0, (720 - 598) / 2.0, 483, 598));
        QVERIFY2(scene.accessible(QAccessible::Dialog, QStringLiteral("Create Account")),
                 qPrintable(scene.accessibleTree()));
        for (const char *const label :
             {"Create Account", "Create a free Talvenor account", "Name", "E-Mail", "Password",
              "Confirm Password", "Free: 3 recordings per month", "Upgrade to Premium anytime"})
            QVERIFY2(scene.accessible(QAccessible::StaticText, QString::fromLatin1(label)),
                     qPrintable(scene.accessibleTree()));
        QVERIFY(scene.accessible(QAccessible::Button, QStringLiteral("Close")));
        RenderedScene::setLanguage(AppLanguage::german);
        for (const char *const label :
             {"Konto erstellen", "Erstelle ein kostenloses Talvenor-Konto", "Name", "E-Mail", "Passwort",
              "Passwort bestätigen", "Kostenlos: 3 Aufnahmen pro Monat", "Jederzeit auf Premium upgraden"})
            QVERIFY2(scene.accessible(QAccessible::StaticText, QString::fromUtf8(label)),
                     qPrintable(scene.accessibleTree()));
        QVERIFY(scene.accessible(QAccessible::Button, QStringLiteral("Schließen")));
    }

    void theFormsPartsHaveTheirSpacings()
    {
        RecorderFixture fixture;
        const RenderedScene scene(login, windowSize);
        openForm(scene);
        QCOMPARE(gapBelow(formItem(scene, "header"), formItem(scene, "form")), 24.0);
        QCOMPARE(gapBelow(formItem(scene, "form"), formItem(scene, "footer")), 24.0);
        QCOMPARE(gapBelow(formItem(scene, "name"), formItem(scene, "email")), 12.0);
        QCOMPARE(gapBelow(formItem(scene, "submit"), formItem(scene, "gift")), 6.0);
        QCOMPARE(formItem(scene, "form").width(), 483.0 - 48);
        QCOMPARE(fontSize(formItem(scene, "title")), 20);
        // The fields of both screens are of one kind.
        QCOMPARE(formItem(scene, "password").height(), scene.item(QStringLiteral("password")).height());
    }

    void inTheSmallestWindowTheFormScrolls()
    {
        RecorderFixture fixture;
        const RenderedScene scene(login, {500, 600});
        openForm(scene);
        QCOMPARE(RenderedScene::rect(scene.item(QStringLiteral("registerForm"))), QRectF(16, 16, 468, 568));
        fillForm(scene, QStringLiteral("123456"), QStringLiteral("123456"));
        formItem(scene, "submit").forceActiveFocus(Qt::TabFocusReason);
        (void)scene.grab();
        QVERIFY(RenderedScene::rect(formItem(scene, "submit")).bottom() < 584);
    }

    void theKeyboardPassesTheFieldsInReadingOrder()
    {
        RecorderFixture fixture;
        const RenderedScene scene(login, windowSize);
        openForm(scene);
        for (const char *const field : {"name", "email", "password", "confirmPassword"}) {
            QVERIFY2(waitUntil([&] { return hasFocus(scene, formItem(scene, field)); }), field);
            scene.type(QStringLiteral("123456"));
            QCOMPARE(formItem(scene, field).property("text").toString(), QStringLiteral("123456"));
            scene.press(Qt::Key_Return); // sends nothing
            scene.press(Qt::Key_Tab);
        }
        QVERIFY(hasFocus(scene, formItem(scene, "submit")));
        QVERIFY(fixture.service->allRequests().isEmpty());
    }

    void theFormIsSentOnlyWhenItIsValid_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("confirmation");
        QTest::addColumn<bool>("isValid");
        QTest::newRow("5 characters") << QStringLiteral("12345") << QStringLiteral("12345") << false;
        QTest::newRow("6 characters") << QStringLiteral("123456") << QStringLiteral("123456") << true;
        QTest::newRow("different") << QStringLiteral("123456") << QStringLiteral("123457") << false;
        QTest::newRow("6 emoji") << QStringLiteral("😀😀😀😀😀😀") << QStringLiteral("😀😀😀😀😀😀") << true;
        QTest::newRow("5 emoji") << QStringLiteral("😀😀😀😀😀") << QStringLiteral("😀😀😀😀😀") << false;
    }

    void theFormIsSentOnlyWhenItIsValid()
    {
        QFETCH(const QString, password);
        QFETCH(const QString, confirmation);
        QFETCH(const bool, isValid);
        RecorderFixture fixture;
        const RenderedScene scene(login, windowSize);
        openForm(scene);
        fillForm(scene, password, confirmation);
        const QQuickItem &submit = formItem(scene, "submit");
        QCOMPARE(submit.isEnabled(), isValid);
        QCOMPARE(submit.opacity(), isValid ? 1.0 : 0.6);
        scene.click(submit);
        const QString route = QStringLiteral("POST /auth/register");
        if (isValid)
            QVERIFY(waitUntil([&] { return fixture.service->requests(route).size() == 1; }));
        QCoreApplication::processEvents();
        QCOMPARE(fixture.service->requests(route).size(), isValid ? 1 : 0);
    }

    void aRefusalStaysInTheSheetAndMovesNothingAboveIt()
    {
        RecorderFixture fixture;
        const QString text = QStringLiteral("This address is already registered.");
        fixture.service->answer(QStringLiteral("POST /auth/register"), 409, refusal(text));
        const RenderedScene scene(login, windowSize);
        openForm(scene);
        fillForm(scene, QStringLiteral("123456"), QStringLiteral("123456"));
        scene.click(formItem(scene, "submit"));
        const QQuickItem &error = formItem(scene, "error");
        QVERIFY(waitUntil([&] { return error.isVisible(); }));
        (void)scene.grab();
        QVERIFY(error.property("text").toString().contains(text));
        QCOMPARE(gapBelow(formItem(scene, "confirmPassword"), error), 12.0);
        QVERIFY(isFormOpen(scene));
        QCOMPARE(formItem(scene, "name").property("text").toString(), QStringLiteral("Ann"));
        // The screen beneath has an error of its own, which this is not.
        QVERIFY(!scene.item(QStringLiteral("error")).isVisible());
    }

    void aLongRefusalWrapsAndComesIntoView()
    {
        RecorderFixture fixture;
        fixture.service->answer(QStringLiteral("POST /auth/register"), 409, refusal(QString(2000, u'W')));
        const RenderedScene scene(login, {960, 640});
        openForm(scene);
        fillForm(scene, QStringLiteral("123456"), QStringLiteral("123456"));
        scene.click(formItem(scene, "submit"));
        const QQuickItem &error = formItem(scene, "error");
        QVERIFY(waitUntil([&] { return error.isVisible(); }));
        (void)scene.grab();
        QCOMPARE(error.width(), 483.0 - 48);
        QVERIFY(error.property("contentWidth").toReal() <= error.width());
        formItem(scene, "name").forceActiveFocus(Qt::TabFocusReason);
        formItem(scene, "submit").forceActiveFocus(Qt::TabFocusReason);
        QVERIFY(waitUntil([&] { return RenderedScene::rect(formItem(scene, "submit")).bottom() < 620; }));
    }

    void closingTheSheetKeepsTheFieldsBeneathAndForgetsItsOwn()
    {
        RecorderFixture fixture;
        const RenderedScene scene(login, windowSize);
        fill(scene, "email", QStringLiteral("kept@example.com"));
        fill(scene, "password", QStringLiteral("kept"));
        for (const bool byEscape : {true, false}) {
            openForm(scene);
            for (const char *const field : {"name", "email", "password", "confirmPassword"})
                QVERIFY(formItem(scene, field).property("text").toString().isEmpty());
            fillForm(scene, QStringLiteral("1"), QStringLiteral("2"));
            if (byEscape)
                scene.press(Qt::Key_Escape);
            else
                QVERIFY(press(scene.accessible(QAccessible::Button, QStringLiteral("Close"))));
            QVERIFY(waitUntil([&] { return !isFormOpen(scene); }));
            QCOMPARE(scene.item(QStringLiteral("email")).property("text").toString(),
                     QStringLiteral("kept@example.com"));
            QCOMPARE(scene.item(QStringLiteral("password")).property("text").toString(),
                     QStringLiteral("kept"));
        }
    }

    void successClosesTheSheetAndSignsIn()
    {
        RecorderFixture fixture;
        fixture.service->answer(QStringLiteral("POST /auth/register"), 200, accepted());
        fixture.service->answer(QStringLiteral("GET /auth/me"), 200,
                                accepted()[QStringLiteral("user")].toObject());
        const RenderedScene scene(login, windowSize);
        openForm(scene);
        fillForm(scene, QStringLiteral("123456"), QStringLiteral("123456"));
        scene.click(formItem(scene, "submit"));
        QVERIFY(waitUntil([&] { return !isFormOpen(scene); }));
        QVERIFY(AuthService::shared().isLoggedIn());
    }
};

TALVENOR_SCREEN_TEST_MAIN(SignInScreensTest)
#include "SignInScreensTest.moc"
