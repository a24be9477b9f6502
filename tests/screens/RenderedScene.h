#pragma once

#include "platform/ColorScheme.h"
#include "settings/AppLanguage.h"

#include <QAccessible>
#include <QColor>
#include <QImage>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QVariantMap>

#include <memory>

namespace talvenor::test {

/// A preference of the desktop's that a test sets.
class FakeColorScheme : public ColorSchemePreference
{
public:
    [[nodiscard]] std::optional<ColorScheme> preferred() const override { return m_preferred; }
    void setListener(std::function<void()> changed) override { m_changed = std::move(changed); }
    void set(std::optional<ColorScheme> preferred);

private:
    std::optional<ColorScheme> m_preferred;
    std::function<void()> m_changed;
};

/// A piece of QML in a window of the program's kind, to be looked at and operated as a person would.
///
/// The window has the theme's background and is shown and active when the constructor returns; nothing of its
/// frame is in the picture. The piece fills the window unless it has a size, if only an implicit one. Each
/// warning from QML fails the running test function. Lengths and points are in logical pixels of the window;
/// the scale of the display is that of the run (see TALVENOR_SCREEN_TEST_MAIN). Main thread.
class RenderedScene
{
public:
    /// `qml` is the text of a component, without imports: QtQuick, QtQuick.Layouts, QtQuick.Templates as T
    /// and Talvenor are there. `properties` are set as it is made. Asserts that the text is right.
    explicit RenderedScene(const QByteArray &qml, QSize size = {400, 300},
                           const QVariantMap &properties = {});
    ~RenderedScene();
    Q_DISABLE_COPY_MOVE(RenderedScene)

    /// Light and English unless set. The scheme stays with the scene (nothing means that the desktop has no
    /// preference); the language is the program's.
    void setScheme(std::optional<ColorScheme> scheme);
    static void setLanguage(AppLanguage language);

    [[nodiscard]] QQuickWindow &window() const { return *m_window; }
    /// What was made from the text.
    [[nodiscard]] QQuickItem &root() const { return *m_root; }
    /// The item with that `objectName`, in the piece or in what it has opened over the window; asserts that
    /// there is one.
    [[nodiscard]] QQuickItem &item(const QString &objectName) const;
    /// The object, which need not be an item (a sheet is none); null if there is none.
    [[nodiscard]] QObject *object(const QString &objectName) const;
    /// Where the item is in the window.
    [[nodiscard]] static QRectF rect(const QQuickItem &item);

    /// A picture of the window as it is now.
    [[nodiscard]] QImage grab() const;
    /// The colour of the pixel at this place of a picture from `grab`.
    [[nodiscard]] static QColor colorAt(const QImage &picture, QPointF point);
    /// As above, of a picture made now.
    [[nodiscard]] QColor colorAt(QPointF point) const { return colorAt(grab(), point); }
    /// The two colours, drawn one over the other.
    [[nodiscard]] static QColor over(const QColor &above, const QColor &below);
    /// The property of the theme with this name, now.
    [[nodiscard]] QColor themeColor(const char *name) const;
    [[nodiscard]] QObject &theme() const;

    void hover(QPointF point) const;
    void click(QPointF point, Qt::MouseButton button = Qt::LeftButton) const;
    void click(const QQuickItem &item) const { click(rect(item).center()); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
    void type(const QString &text) const;

    /// What assistive technology is told about the object; null if it is not told of it.
    [[nodiscard]] static QAccessibleInterface *accessible(QObject &object);
    /// The first thing in the window's tree with this role and name; null if there is none.
    [[nodiscard]] QAccessibleInterface *accessible(QAccessible::Role role, const QString &name) const;
    /// The window's tree as lines of role, name, value and states, for messages.
    [[nodiscard]] QString accessibleTree() const;

private:
    std::shared_ptr<FakeColorScheme> m_scheme;
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<QQuickItem> m_root;
};

/// True if no channel differs by more than `tolerance`; the default is what rounding along the way may cost.
[[nodiscard]] bool isNear(const QColor &actual, const QColor &expected, int tolerance = 2);
/// Says what the colours are.
[[nodiscard]] QString differenceText(const QColor &actual, const QColor &expected, int tolerance = 2);

} // namespace talvenor::test

/// Compares a colour on the screen with what it should be; a third argument is the tolerance.
#define TALVENOR_COMPARE_COLOR(actual, ...)                                                                  \
    QVERIFY2(talvenor::test::isNear(actual, __VA_ARGS__),                                                    \
             qPrintable(talvenor::test::differenceText(actual, __VA_ARGS__)))

/// The main function of a test with windows. "--scale 2" runs it on a display of that scale; the other
/// arguments go to Qt Test.
#define TALVENOR_SCREEN_TEST_MAIN(TestClass)                                                                 \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        return talvenor::test::runScreenTest(argc, argv, [](int count, char **arguments) {                   \
            TestClass test;                                                                                  \
            return QTest::qExec(&test, count, arguments);                                                    \
        });                                                                                                  \
    }

namespace talvenor::test {

/// Makes the application object and runs the test in it.
int runScreenTest(int argc, char **argv, const std::function<int(int, char **)> &test);

} // namespace talvenor::test
