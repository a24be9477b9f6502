#include "RenderedScene.h"

#include "support/Await.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTest>

using namespace talvenor;
using test::RenderedScene;

namespace {

QColor at(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

QString text(const RenderedScene &scene)
{
    return scene.root().property("text").toString();
}

/// The TextInput of the field.
QQuickItem &input(const QQuickItem &item)
{
    for (QQuickItem *const child : item.childItems()) {
        if (child->inherits("QQuickTextInput"))
            return *child;
        if (child->inherits("QQuickFocusScope"))
            return input(*child);
    }
    qFatal("there is no text input");
}

} // namespace

/// Fields: their looks, and what becomes of what is typed and pasted into them.
class FieldsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFormFieldHasItsMeasuresAndColours_data()
    {
        QTest::addColumn<ColorScheme>("scheme");
        QTest::addColumn<QColor>("fill");
        QTest::newRow("light") << ColorScheme::light
                               << RenderedScene::over(at(Qt::black, 0.04), QColor(0xf5, 0xf5, 0xf7));
        QTest::newRow("dark") << ColorScheme::dark
                              << RenderedScene::over(at(Qt::white, 0.06), QColor(0x1e, 0x1e, 0x20));
    }

    void aFormFieldHasItsMeasuresAndColours()
    {
        QFETCH(ColorScheme, scheme);
        QFETCH(QColor, fill);
        RenderedScene scene(
            "FormField { x: 20; y: 20; width: 200; label: 'Name'; placeholder: 'Max Mustermann' }");
        scene.setScheme(scheme);
        const QList<QQuickItem *> parts = scene.root().childItems();
        QCOMPARE(parts.size(), 2);
        const QRectF label = RenderedScene::rect(*parts[0]);
        const QRectF box = RenderedScene::rect(*parts[1]);
        QCOMPARE(parts[0]->property("text").toString(), QStringLiteral("Name"));
        QCOMPARE(parts[0]->property("font").value<QFont>().pixelSize(), 12);
        QCOMPARE(parts[0]->property("color").value<QColor>(), scene.themeColor("secondary"));
        QCOMPARE(box.top() - label.bottom(), 5.0);
        QCOMPARE(box.width(), 200.0);
        const QRectF line = RenderedScene::rect(input(scene.root()));
        QCOMPARE(line, box.marginsRemoved({10, 10, 10, 10}));
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {box.right() - 5, box.center().y()}), fill);
        // Rounded by 8, and without a line around it.
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, box.topLeft() + QPointF(1, 1)),
                               scene.themeColor("windowBackground"), 4);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, box.topLeft() + QPointF(3.5, 3.5)), fill);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {box.center().x(), box.top() + 0.2}), fill);
    }

    void aFieldIsNamedByItsLabelElseByItsPlaceholder()
    {
        const RenderedScene scene("Column { FormField { label: 'E-Mail'; placeholder: 'name@example.com' }\n"
                                  "InputField { placeholder: 'Search' } }");
        QVERIFY2(scene.accessible(QAccessible::EditableText, QStringLiteral("E-Mail")),
                 qPrintable(scene.accessibleTree()));
        QVERIFY(scene.accessible(QAccessible::EditableText, QStringLiteral("Search")));
        QVERIFY(!scene.accessible(QAccessible::EditableText, QStringLiteral("name@example.com")));
    }

    void whatIsTypedIsTheText()
    {
        const RenderedScene scene(
            "FormField { x: 20; y: 20; width: 200; label: 'Name'; placeholder: 'Somebody'\n"
            "property int returns: 0; onAccepted: ++returns }");
        scene.click({60, 60});
        scene.type(QStringLiteral("Ann Lee"));
        QCOMPARE(text(scene), QStringLiteral("Ann Lee"));
        scene.press(Qt::Key_Return);
        QCOMPARE(scene.root().property("returns").toInt(), 1);
        QAccessibleInterface *const field =
            scene.accessible(QAccessible::EditableText, QStringLiteral("Name"));
        QVERIFY(field->state().focused);
        QCOMPARE(field->text(QAccessible::Value), QStringLiteral("Ann Lee"));
        field->editableTextInterface()->replaceText(0, -1, QStringLiteral("Bob"));
        QCOMPARE(text(scene), QStringLiteral("Bob"));
    }

    void theFieldInUseHasARing()
    {
        const RenderedScene scene("InputField { x: 20; y: 20; width: 200; placeholder: 'Name' }");
        const QPointF edge(120, 20.8);
        QVERIFY(!test::isNear(scene.colorAt(edge), scene.themeColor("focusRing"), 10));
        scene.press(Qt::Key_Tab);
        TALVENOR_COMPARE_COLOR(scene.colorAt(edge), scene.themeColor("focusRing"), 4);
    }

    void aSecureFieldShowsBulletsOnly()
    {
        const RenderedScene scene(
            "FormField { x: 20; y: 20; width: 200; label: 'Password'; isSecure: true }");
        scene.press(Qt::Key_Tab);
        scene.type(QStringLiteral("secret"));
        QCOMPARE(text(scene), QStringLiteral("secret"));
        const QString bullets(6, u'•');
        QCOMPARE(input(scene.root()).property("displayText").toString(), bullets);
        QAccessibleInterface *const field =
            scene.accessible(QAccessible::EditableText, QStringLiteral("Password"));
        QVERIFY2(field, qPrintable(scene.accessibleTree()));
        QCOMPARE(field->text(QAccessible::Value), bullets);
        QCOMPARE(field->textInterface()->text(0, 100), bullets);
        QVERIFY(!scene.accessibleTree().contains(u"secret"));
    }

    void aSecureFieldGivesNothingToTheClipboard()
    {
        const RenderedScene scene(
            "FormField { x: 20; y: 20; width: 200; label: 'Password'; isSecure: true }");
        QClipboard &clipboard = *QGuiApplication::clipboard();
        clipboard.setText(QStringLiteral("before"));
        scene.press(Qt::Key_Tab);
        scene.type(QStringLiteral("secret"));
        scene.press(Qt::Key_A, Qt::ControlModifier);
        scene.press(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboard.text(), QStringLiteral("before"));
        scene.press(Qt::Key_X, Qt::ControlModifier);
        QCOMPARE(clipboard.text(), QStringLiteral("before"));
        if (clipboard.supportsSelection())
            QVERIFY(!clipboard.text(QClipboard::Selection).contains(u"secret"));
    }

    void pastedLinesAndControlCharactersStayAndDoNotBreakTheLine()
    {
        const RenderedScene scene("FormField { x: 20; y: 20; width: 200; label: 'Name' }");
        const double height = scene.root().height();
        const double line = input(scene.root()).property("contentHeight").toReal();
        const QString pasted = u"one\ntwo\r\nthree\u2028four\tfive\u0007six\u202Eabc"_qs;
        QGuiApplication::clipboard()->setText(pasted);
        scene.press(Qt::Key_Tab);
        scene.press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(text(scene), pasted);
        // Other faces may be a little higher; a second line would be as high again.
        QVERIFY(input(scene.root()).property("contentHeight").toReal() < 1.5 * line);
        QCOMPARE(scene.root().height(), height);
    }

    void pastedMegabytesAreTakenWhole_data()
    {
        QTest::addColumn<bool>("isSecure");
        QTest::newRow("plain") << false;
        QTest::newRow("secure") << true;
    }

    void pastedMegabytesAreTakenWhole()
    {
        QFETCH(bool, isSecure);
        const RenderedScene scene("FormField { x: 20; y: 20; width: 200; label: 'Name' }", {400, 300},
                                  {{QStringLiteral("isSecure"), isSecure}});
        const QString pasted = u"Grüße 🎙 مرحبا\n"_qs.repeated(70'000); // about a million characters
        QGuiApplication::clipboard()->setText(pasted);
        scene.press(Qt::Key_Tab);
        const double height = scene.root().height();
        QElapsedTimer clock;
        clock.start();
        scene.press(Qt::Key_V, Qt::ControlModifier);
        QVERIFY(!scene.grab().isNull());
        QVERIFY2(clock.elapsed() < 5'000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(text(scene).size(), pasted.size());
        QVERIFY(text(scene) == pasted);
        // It goes on from there, and nothing of it is lost.
        scene.press(Qt::Key_Home);
        scene.press(Qt::Key_Delete);
        QVERIFY(text(scene) == pasted.mid(1));
        QCOMPARE(scene.root().height(), height);
        scene.press(Qt::Key_A, Qt::ControlModifier);
        scene.press(Qt::Key_Delete);
        QCOMPARE(text(scene), QString());
    }

    void allOfALongTextIsReplacedAtOnce()
    {
        const RenderedScene scene("FormField { x: 20; y: 20; width: 200; label: 'Name' }");
        QVERIFY(scene.root().setProperty("text", QString(50'000, u'x')));
        QCOMPARE(text(scene).size(), 50'000);
        scene.press(Qt::Key_Tab);
        scene.press(Qt::Key_A, Qt::ControlModifier);
        scene.type(QStringLiteral("a"));
        QCOMPARE(text(scene), QStringLiteral("a"));
        // So it is with a paste.
        const QString other(30'000, u'y');
        QGuiApplication::clipboard()->setText(other);
        scene.press(Qt::Key_A, Qt::ControlModifier);
        scene.press(Qt::Key_V, Qt::ControlModifier);
        QVERIFY(text(scene) == other);
        scene.press(Qt::Key_A, Qt::ControlModifier);
        scene.press(Qt::Key_V, Qt::ControlModifier);
        QVERIFY(text(scene) == other);
        // In the middle it comes between.
        QVERIFY(scene.root().setProperty("text", QStringLiteral("[]")));
        scene.press(Qt::Key_Home);
        scene.press(Qt::Key_Right);
        scene.press(Qt::Key_V, Qt::ControlModifier);
        QVERIFY(text(scene) == u'[' + other + u']');
    }

    void theTreeSetsLongTextsWhole()
    {
        const RenderedScene scene("FormField { x: 20; y: 20; width: 200; label: 'Name' }");
        QAccessibleInterface *const field =
            scene.accessible(QAccessible::EditableText, QStringLiteral("Name"));
        const QString whole(100'000, u'x');
        field->editableTextInterface()->replaceText(0, -1, whole);
        QVERIFY(text(scene) == whole);
        field->editableTextInterface()->insertText(0, QStringLiteral("y"));
        QCOMPARE(text(scene).size(), whole.size() + 1);
        QVERIFY(text(scene) == u'y' + whole);
    }

    void aDisabledFieldTakesNothing()
    {
        const RenderedScene scene(
            "FormField { x: 20; y: 20; width: 200; label: 'Name'; text: 'Ann'; enabled: false }");
        scene.click({60, 60});
        scene.type(QStringLiteral("x"));
        QCOMPARE(text(scene), QStringLiteral("Ann"));
        QAccessibleInterface *const field =
            scene.accessible(QAccessible::EditableText, QStringLiteral("Name"));
        QVERIFY(field && field->state().disabled);
    }
};

TALVENOR_SCREEN_TEST_MAIN(FieldsTest)
#include "FieldsTest.moc"
