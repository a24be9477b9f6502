#include "RenderedScene.h"

#include "platform/Platform.h"
#include "screens/Accessibility.h"
#include "screens/ScreensModule.h"
#include "settings/AppSettings.h"
#include "support/Await.h"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlExpression>
#include <QRegularExpression>
#include <QTest>

#include <cmath>

namespace talvenor::test {

namespace {

const QByteArray imports =
    "import QtQuick\nimport QtQuick.Layouts\nimport QtQuick.Templates as T\nimport Talvenor\n";

const QByteArray windowText = "T.ApplicationWindow { property QtObject theme: Theme; color: "
                              "Theme.windowBackground; font.family: metrics.font.family\n"
                              "    FontMetrics { id: metrics } }";

template<typename Type>
std::unique_ptr<Type> make(QQmlEngine &engine, const QByteArray &text, const QVariantMap &properties)
{
    QQmlComponent component(&engine);
    // The first line of the text is line 1 in messages.
    component.setData(QByteArray(imports).replace('\n', ';') + text, QUrl(QStringLiteral("scene.qml")));
    std::unique_ptr<QObject> object(component.createWithInitialProperties(properties));
    if (!object)
        qFatal("%s", qPrintable(component.errorString()));
    auto *const typed = qobject_cast<Type *>(object.get());
    if (!typed)
        qFatal("the scene's root is of another type");
    object.release();
    QQmlEngine::setObjectOwnership(typed, QQmlEngine::CppOwnership);
    return std::unique_ptr<Type>(typed);
}

QObject *find(QObject *from, const QString &name)
{
    if (from->objectName() == name)
        return from;
    if (QObject *const child = from->findChild<QObject *>(name))
        return child;
    // Delegates and what lies in a popup are children in the scene only.
    if (auto *const item = qobject_cast<QQuickItem *>(from)) {
        for (QQuickItem *const child : item->childItems()) {
            if (QObject *const found = find(child, name))
                return found;
        }
    }
    return nullptr;
}

QAccessibleInterface *find(QAccessibleInterface *from, QAccessible::Role role, const QString &name)
{
    if (!from)
        return nullptr;
    if (from->role() == role && from->text(QAccessible::Name) == name && !from->state().invisible)
        return from;
    for (int i = 0; i < from->childCount(); ++i) {
        if (QAccessibleInterface *const found = find(from->child(i), role, name))
            return found;
    }
    return nullptr;
}

void describe(QAccessibleInterface *from, int depth, QString &lines)
{
    if (!from)
        return;
    const QAccessible::State state = from->state();
    lines += QString(depth * 2, u' ') +
             QStringLiteral("%1 \"%2\" value \"%3\"%4%5%6%7%8\n")
                 .arg(QString::fromLatin1(qAccessibleRoleString(from->role())), from->text(QAccessible::Name),
                      from->text(QAccessible::Value), state.focused ? QStringLiteral(" focused") : QString(),
                      state.disabled ? QStringLiteral(" disabled") : QString(),
                      state.checked ? QStringLiteral(" checked") : QString(),
                      state.selected ? QStringLiteral(" selected") : QString(),
                      state.invisible ? QStringLiteral(" invisible") : QString());
    for (int i = 0; i < from->childCount(); ++i)
        describe(from->child(i), depth + 1, lines);
}

} // namespace

void FakeColorScheme::set(std::optional<ColorScheme> preferred)
{
    m_preferred = preferred;
    if (m_changed)
        m_changed();
}

RenderedScene::RenderedScene(const QByteArray &qml, QSize size, const QVariantMap &properties)
    : m_scheme(std::make_shared<FakeColorScheme>())
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("\\.qml")));
    [[maybe_unused]] static const bool isModuleThere = [] {
        initializeScreens();
        return true;
    }();
    m_scheme->set(ColorScheme::light);
    Platform::shared().colorScheme = m_scheme;
    setLanguage(AppLanguage::english);
    m_engine = std::make_unique<QQmlEngine>();
    m_engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    [[maybe_unused]] static const bool isAccessibilityThere = [] {
        installAccessibility();
        return true;
    }();

    m_window = make<QQuickWindow>(*m_engine, windowText, {});
    m_window->resize(size);
    m_root = make<QQuickItem>(*m_engine, qml, properties);
    m_root->setParentItem(m_window->contentItem());
    if (m_root->width() == 0 && m_root->height() == 0)
        m_root->setSize(size);
    m_window->show();
    m_window->requestActivate();
    if (!QTest::qWaitForWindowActive(m_window.get()))
        qFatal("the window does not come up");
}

RenderedScene::~RenderedScene()
{
    m_root.reset();
    m_window.reset();
    m_engine.reset();
    Platform::shared().colorScheme.reset();
}

void RenderedScene::setScheme(std::optional<ColorScheme> scheme)
{
    m_scheme->set(scheme);
}

void RenderedScene::setLanguage(AppLanguage language)
{
    AppSettings::shared().setAppLanguage(language);
}

QObject *RenderedScene::object(const QString &objectName) const
{
    if (QObject *const found = find(m_root.get(), objectName))
        return found;
    return find(m_window->contentItem(), objectName);
}

QQuickItem &RenderedScene::item(const QString &objectName) const
{
    auto *const found = qobject_cast<QQuickItem *>(object(objectName));
    if (!found)
        qFatal("there is no item \"%s\"", qPrintable(objectName));
    return *found;
}

QRectF RenderedScene::rect(const QQuickItem &item)
{
    return item.mapRectToScene({0, 0, item.width(), item.height()});
}

QImage RenderedScene::grab() const
{
    QImage picture = m_window->grabWindow();
    // The software backend leaves it at 1.
    picture.setDevicePixelRatio(m_window->effectiveDevicePixelRatio());
    return picture;
}

QColor RenderedScene::colorAt(const QImage &picture, QPointF point)
{
    const QPointF pixel = point * picture.devicePixelRatio();
    const QPoint place(static_cast<int>(std::floor(pixel.x())), static_cast<int>(std::floor(pixel.y())));
    if (!picture.rect().contains(place))
        qFatal("the point %g, %g is outside of the window", point.x(), point.y());
    return picture.pixelColor(place);
}

QColor RenderedScene::over(const QColor &above, const QColor &below)
{
    const float share = above.alphaF();
    const auto mix = [share](float front, float back) { return front * share + back * (1 - share); };
    return QColor::fromRgbF(mix(above.redF(), below.redF()), mix(above.greenF(), below.greenF()),
                            mix(above.blueF(), below.blueF()));
}

QObject &RenderedScene::theme() const
{
    return *m_window->property("theme").value<QObject *>();
}

QColor RenderedScene::themeColor(const char *name) const
{
    return theme().property(name).value<QColor>();
}

void RenderedScene::hover(QPointF point) const
{
    // A move to where the pointer was in another window would be none.
    QTest::mouseMove(m_window.get(), point.toPoint() + QPoint(1, 1));
    QTest::mouseMove(m_window.get(), point.toPoint());
}

void RenderedScene::click(QPointF point, Qt::MouseButton button) const
{
    QTest::mouseClick(m_window.get(), button, Qt::NoModifier, point.toPoint());
}

void RenderedScene::press(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    QTest::keyClick(m_window.get(), key, modifiers);
}

void RenderedScene::type(const QString &text) const
{
    for (const QChar character : text)
        QTest::sendKeyEvent(QTest::Click, m_window.get(), Qt::Key_unknown, QString(character),
                            Qt::NoModifier);
}

QAccessibleInterface *RenderedScene::accessible(QObject &object)
{
    QAccessible::setActive(true); // for what was made since it was asked for last
    return QAccessible::queryAccessibleInterface(&object);
}

QAccessibleInterface *RenderedScene::accessible(QAccessible::Role role, const QString &name) const
{
    QAccessible::setActive(true);
    return find(QAccessible::queryAccessibleInterface(m_window.get()), role, name);
}

QString RenderedScene::accessibleTree() const
{
    QAccessible::setActive(true);
    QString lines;
    describe(QAccessible::queryAccessibleInterface(m_window.get()), 0, lines);
    return lines;
}

bool isNear(const QColor &actual, const QColor &expected, int tolerance)
{
    return std::abs(actual.red() - expected.red()) <= tolerance &&
           std::abs(actual.green() - expected.green()) <= tolerance &&
           std::abs(actual.blue() - expected.blue()) <= tolerance &&
           std::abs(actual.alpha() - expected.alpha()) <= tolerance;
}

QString differenceText(const QColor &actual, const QColor &expected, int tolerance)
{
    return QStringLiteral("is %1, should be %2 within %3")
        .arg(actual.name(QColor::HexArgb), expected.name(QColor::HexArgb))
        .arg(tolerance);
}

int runScreenTest(int argc, char **argv, const std::function<int(int, char **)> &test)
{
    std::vector<char *> rest{argv[0]};
    for (int i = 1; i < argc; ++i) {
        if (qstrcmp(argv[i], "--scale") == 0 && i + 1 < argc)
            qputenv("QT_SCALE_FACTOR", argv[++i]);
        else
            rest.push_back(argv[i]);
    }
    int count = static_cast<int>(rest.size());
    QCoreApplication::setApplicationName(QStringLiteral("talvenor"));
    QApplication application(count, rest.data());
    if (QFontDatabase::families().contains(QStringLiteral("Inter")))
        QApplication::setFont(QFont(QStringLiteral("Inter")));
    return test(count, rest.data());
}

} // namespace talvenor::test
