#include "RenderedScene.h"

#include "screens/Spring.h"
#include "screens/paint/PaintedItem.h"
#include "support/Await.h"

#include <QEasingCurve>
#include <QTest>

#include <cmath>
#include <numbers>

using namespace talvenor;
using test::isNear;
using test::RenderedScene;

namespace {

const QColor purple(107, 92, 232);
const QColor blue(10, 133, 227);

QColor mixed(const QColor &from, const QColor &to, double share)
{
    const auto channel = [share](int a, int b) { return qRound(a + (b - a) * share); };
    return {channel(from.red(), to.red()), channel(from.green(), to.green()),
            channel(from.blue(), to.blue())};
}

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

int paintCount(const QQuickItem &item)
{
    return dynamic_cast<const PaintedItem &>(item).paintCount();
}

} // namespace

/// What the paint items put on the screen.
class PaintItemsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aGradientRunsFromCornerToCorner()
    {
        const RenderedScene scene(
            "GradientFill { x: 20; y: 20; width: 100; height: 100; startColor: '#6b5ce8'\n"
            "endColor: '#0a85e3' }");
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {20.2, 20.2}), purple);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 70}), mixed(purple, blue, 0.5));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {119.8, 119.8}), blue);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {119.8, 20.2}), mixed(purple, blue, 0.5));
    }

    void aGradientHasADirectionAndAMiddle()
    {
        const RenderedScene scene(
            "GradientFill { x: 20; y: 20; width: 101; height: 100; startColor: '#ff0000'\n"
            "middleColor: '#00ff00'; endColor: '#0000ff'\n"
            "startPoint: Qt.point(0.5, 0); endPoint: Qt.point(0.5, 0.5) }");
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 20.2}), Qt::red, 6);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {21, 45}), Qt::green, 12);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 71}), QColor(Qt::blue));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 119}), QColor(Qt::blue));
    }

    void aFadeToClearKeepsItsHue()
    {
        const RenderedScene scene(
            "Rectangle { width: 400; height: 300; color: '#ffffff'\n"
            "GradientFill { x: 20; y: 20; width: 100; height: 40; startColor: '#ff0000'\n"
            "endColor: 'transparent'; endPoint: Qt.point(1, 0) } }");
        TALVENOR_COMPARE_COLOR(scene.colorAt({70, 40}), QColor(255, 128, 128), 3);
    }

    void cornersAreRoundAndSmooth()
    {
        const RenderedScene scene(
            "Rectangle { width: 400; height: 300; color: '#ffffff'\n"
            "GradientFill { x: 20; y: 20; width: 100; height: 40; startColor: '#000000'\n"
            "endColor: '#000000'; radius: 1000 } }");
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {22, 22}), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {21.5, 40}), QColor(Qt::black));
        // On the rim many pixels are partly covered.
        int between = 0;
        const qreal pixel = 1 / picture.devicePixelRatio();
        for (qreal y = 22; y < 30; y += pixel) {
            for (qreal x = 20; x < 40; x += pixel) {
                const int value = scene.colorAt(picture, {x, y}).red();
                between += value > 40 && value < 215 ? 1 : 0;
            }
        }
        QVERIFY(between >= 6);
    }

    void straightEdgesAreSharp()
    {
        const RenderedScene scene(
            "Rectangle { width: 400; height: 300; color: '#ffffff'\n"
            "GradientFill { x: 20; y: 20; width: 100; height: 40; startColor: '#000000'\n"
            "endColor: '#000000'; radius: 8 } }");
        const QImage picture = scene.grab();
        const qreal pixel = 1 / picture.devicePixelRatio();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 20 - pixel / 2}), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 20 + pixel / 2}), QColor(Qt::black));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 60 - pixel / 2}), QColor(Qt::black));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 60 + pixel / 2}), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {20 - pixel / 2, 40}), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {20 + pixel / 2, 40}), QColor(Qt::black));
    }

    void aBorderLiesInsideTheShape()
    {
        const RenderedScene scene(
            "Rectangle { width: 400; height: 300; color: '#ffffff'\n"
            "GradientFill { x: 20; y: 20; width: 100; height: 40; borderWidth: 2; radius: 10\n"
            "borderStartColor: '#ff0000'; borderEndColor: '#0000ff' } }");
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {19.6, 40}), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {20.2, 40}), Qt::red, 6);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {119.7, 40}), Qt::blue, 6);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 40}), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {70, 22.6}), QColor(Qt::white));
    }

    void halfAPixelOfABorderIsHalfAsStrong()
    {
        const RenderedScene scene("Rectangle { width: 400; height: 300; color: '#ffffff'\n"
                                  "GradientFill { x: 20; y: 20; width: 100; height: 40; borderWidth: 0.5\n"
                                  "borderStartColor: '#000000'; borderEndColor: '#000000' } }");
        const QImage picture = scene.grab();
        const qreal scale = picture.devicePixelRatio();
        const int strength = 255 - scene.colorAt(picture, {70, 20 + 0.5 / scale}).red();
        QVERIFY2(std::abs(strength - qRound(255 * std::min(1.0, 0.5 * scale))) <= 3,
                 qPrintable(QString::number(strength)));
    }

    void aBordersGradientCanRunDownwards()
    {
        const RenderedScene scene(
            "Rectangle { width: 400; height: 300; color: '#ffffff'\n"
            "GradientFill { x: 20; y: 20; width: 40; height: 100; borderWidth: 2\n"
            "isBorderVertical: true; borderStartColor: '#ff0000'; borderMiddleColor: '#00ff00'\n"
            "borderEndColor: '#0000ff' } }");
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {40, 20.6}), Qt::red, 12);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {20.6, 70}), Qt::green, 12);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {40, 119.4}), Qt::blue, 12);
    }

    void aGlowIsFullAtItsStartAndGoneAtItsEnd()
    {
        const RenderedScene scene(
            "Rectangle { width: 400; height: 300; color: '#ffffff'\n"
            "RadialFill { anchors.fill: parent; center: Qt.point(0.25, 0.5); color: '#80ff0000'\n"
            "startRadius: 20; endRadius: 100 } }");
        const QImage picture = scene.grab();
        const auto expected = [](double share) {
            return RenderedScene::over(withOpacity(Qt::red, 128.0 / 255 * share), Qt::white);
        };
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {100, 150}), expected(1));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {118, 150}), expected(1));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {160, 150}), expected(0.5), 3);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {100, 90}), expected(0.5), 3);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {202, 150}), QColor(Qt::white));
    }

    void aGlowEndsAtItsItem()
    {
        const RenderedScene scene("Rectangle { width: 400; height: 300; color: '#ffffff'\n"
                                  "RadialFill { x: 100; y: 100; width: 50; height: 50; color: '#ff0000'\n"
                                  "startRadius: 200; endRadius: 300 } }");
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {125, 125}), QColor(Qt::red));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {97, 125}), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {153, 125}), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {125, 153}), QColor(Qt::white));
    }

    void aGlowFollowsTheSizeWithoutPainting()
    {
        const RenderedScene scene(
            "Rectangle { width: 400; height: 300; color: '#ffffff'\n"
            "RadialFill { objectName: 'glow'; width: 200; height: 100; color: '#ff0000'\n"
            "startRadius: 20; endRadius: 40 } }");
        TALVENOR_COMPARE_COLOR(scene.colorAt({100, 50}), QColor(Qt::red));
        QQuickItem &glow = scene.item(QStringLiteral("glow"));
        const int before = paintCount(glow);
        glow.setSize({400, 300});
        TALVENOR_COMPARE_COLOR(scene.colorAt({200, 150}), QColor(Qt::red));
        TALVENOR_COMPARE_COLOR(scene.colorAt({100, 50}), QColor(Qt::white));
        QCOMPARE(paintCount(glow), before);
        QVERIFY(glow.setProperty("color", QColor(Qt::blue)));
        TALVENOR_COMPARE_COLOR(scene.colorAt({200, 150}), QColor(Qt::blue));
        QCOMPARE(paintCount(glow), before + 1);
    }

    void aRingIsALineOnItsCircle()
    {
        const RenderedScene scene("Rectangle { width: 400; height: 300; color: '#ffffff'\n"
                                  "RingStroke { x: 50; y: 50; width: 100; height: 100; lineWidth: 4\n"
                                  "colors: ['#ff0000'] } }");
        const QImage picture = scene.grab();
        for (const QPointF &point : {QPointF(100, 49), QPointF(100, 51), QPointF(49, 100), QPointF(151, 100)})
            TALVENOR_COMPARE_COLOR(scene.colorAt(picture, point), QColor(Qt::red), 8);
        for (const QPointF &point : {QPointF(100, 46.5), QPointF(100, 53.5), QPointF(100, 100)})
            TALVENOR_COMPARE_COLOR(scene.colorAt(picture, point), QColor(Qt::white));
    }

    void aRingsPartAndColoursRunClockwiseFromTheRight()
    {
        const RenderedScene scene(
            "Rectangle { width: 400; height: 300; color: '#ffffff'\n"
            "RingStroke { x: 50; y: 50; width: 100; height: 100; lineWidth: 6; fraction: 0.65\n"
            "hasRoundCaps: true; colors: ['#ff0000', '#00ff00', '#0000ff'] } }");
        const QImage picture = scene.grab();
        const auto at = [&](double turn, double distance = 50) {
            const double angle = turn * 2 * std::numbers::pi;
            return scene.colorAt(picture,
                                 QPointF(100 + distance * std::cos(angle), 100 + distance * std::sin(angle)));
        };
        TALVENOR_COMPARE_COLOR(at(0.01), QColor(Qt::red), 12);
        TALVENOR_COMPARE_COLOR(at(0.25), QColor(127, 128, 0), 8);
        TALVENOR_COMPARE_COLOR(at(0.5), QColor(Qt::green), 8);
        TALVENOR_COMPARE_COLOR(at(0.64), QColor(0, 184, 71), 8);
        TALVENOR_COMPARE_COLOR(at(0.75), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(at(0.97), QColor(Qt::white));
        // The round end goes on for half of the width, which is 0.0095 of the circumference.
        QVERIFY(!isNear(at(0.656), QColor(Qt::white), 40));
    }

    void movingPaintsNothing()
    {
        const RenderedScene scene("RingStroke { objectName: 'ring'; x: 50; y: 50; width: 100; height: 100\n"
                                  "colors: ['#ff0000', '#0000ff'] }");
        QQuickItem &ring = scene.item(QStringLiteral("ring"));
        const QImage before = scene.grab();
        QCOMPARE(paintCount(ring), 1);
        ring.setRotation(90);
        ring.setScale(1.1);
        ring.setOpacity(0.5);
        ring.setX(60);
        QVERIFY(scene.grab() != before);
        QCOMPARE(paintCount(ring), 1);
        QVERIFY(ring.setProperty("lineWidth", 3));
        QVERIFY(!scene.grab().isNull());
        QCOMPARE(paintCount(ring), 2);
        // The same value again is no change.
        QVERIFY(ring.setProperty("lineWidth", 3));
        QVERIFY(!scene.grab().isNull());
        QCOMPARE(paintCount(ring), 2);
    }

    void aShadowIsAGaussianOfHalfItsRadius()
    {
        const RenderedScene scene("Rectangle { width: 400; height: 300; color: '#ffffff'\n"
                                  "SoftShadow { x: 100; y: 100; width: 200; height: 100; color: '#000000'\n"
                                  "blurRadius: 20; offsetY: 10 } }");
        const QImage picture = scene.grab();
        // Across a long straight edge the blur is the normal distribution, here of deviation 10.
        const auto opacity = [](double distance) {
            return 0.5 * std::erfc(distance / (10 * std::sqrt(2.0)));
        };
        for (const int distance : {-20, -10, -5, 0, 5, 10, 20}) {
            const double actual = 1 - scene.colorAt(picture, {200, 210.0 + distance}).redF();
            QVERIFY2(std::abs(actual - opacity(distance + 0.5)) < 0.02,
                     qPrintable(QStringLiteral("%1: %2").arg(distance).arg(actual)));
        }
        // It is gone where the offset has moved it from, and everywhere far away.
        QVERIFY(scene.colorAt(picture, {200, 79}).red() > 250);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {200, 245}), QColor(Qt::white));
    }

    void aCirclesShadowIsRound()
    {
        const RenderedScene scene("Rectangle { width: 400; height: 300; color: '#ffffff'\n"
                                  "SoftShadow { x: 100; y: 100; width: 100; height: 100; color: '#80ff0000'\n"
                                  "blurRadius: 4; cornerRadius: 50 } }");
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {150, 150}), QColor(255, 127, 127), 2);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {104, 104}), QColor(Qt::white));
        QVERIFY(scene.colorAt(picture, {150, 102}).green() < 200);
    }

    void whatHasNoNumbersIsNotPainted_data()
    {
        QTest::addColumn<QByteArray>("item");
        QTest::newRow("shadow without end")
            << QByteArray("SoftShadow { blurRadius: Infinity; color: '#000000'");
        QTest::newRow("shadow at no place") << QByteArray("SoftShadow { offsetX: NaN; color: '#000000'");
        QTest::newRow("glow without end") << QByteArray("RadialFill { endRadius: Infinity; color: '#000000'");
        QTest::newRow("glow of no size") << QByteArray("RadialFill { endRadius: NaN; color: '#000000'");
        QTest::newRow("ring of no width") << QByteArray("RingStroke { lineWidth: NaN; colors: ['#000000']");
        QTest::newRow("ring of no colours") << QByteArray("RingStroke { colors: ['no colour', 7, null]");
        QTest::newRow("fill of no colours") << QByteArray("GradientFill { radius: NaN");
        QTest::newRow("fill wider than displays")
            << QByteArray("GradientFill { startColor: '#000000'; width: 1e9");
    }

    void whatHasNoNumbersIsNotPainted()
    {
        QFETCH(QByteArray, item);
        const RenderedScene scene(
            "Rectangle { width: 400; height: 300; color: '#ffffff'\n" + item +
            (item.contains("width") && !item.contains("lineWidth") ? "" : "; width: 200") +
            "; x: 50; y: 50; height: 100 } }");
        const QImage picture = scene.grab();
        for (int y = 10; y < 300; y += 20) {
            for (int x = 10; x < 400; x += 20)
                TALVENOR_COMPARE_COLOR(scene.colorAt(picture, QPointF(x, y)), QColor(Qt::white));
        }
    }

    void aSpringMovesByItsFormula_data()
    {
        QTest::addColumn<double>("response");
        QTest::addColumn<double>("dampingFraction");
        QTest::newRow("swinging") << 0.4 << 0.75;
        QTest::newRow("hardly damped") << 0.3 << 0.4;
        QTest::newRow("critical") << 0.5 << 1.0;
        QTest::newRow("creeping") << 0.5 << 1.5;
    }

    void aSpringMovesByItsFormula()
    {
        QFETCH(double, response);
        QFETCH(double, dampingFraction);
        // The equation of motion itself, in small steps.
        const double stiffness = std::pow(2 * std::numbers::pi / response, 2);
        const double damping = 4 * std::numbers::pi * dampingFraction / response;
        const QVariantList points = Spring::curve(response, dampingFraction);
        QEasingCurve curve(QEasingCurve::BezierSpline);
        for (qsizetype i = 0; i + 5 < points.size(); i += 6)
            curve.addCubicBezierSegment({points[i].toDouble(), points[i + 1].toDouble()},
                                        {points[i + 2].toDouble(), points[i + 3].toDouble()},
                                        {points[i + 4].toDouble(), points[i + 5].toDouble()});
        const double end = Spring::duration(response, dampingFraction) / 1000.0;
        constexpr int steps = 200'000;
        double position = 0;
        double velocity = 0;
        for (int i = 0; i <= steps; ++i) {
            if (i % 2'000 == 0) {
                const double shown = curve.valueForProgress(static_cast<double>(i) / steps);
                QVERIFY2(std::abs(shown - position) < 0.006,
                         qPrintable(QStringLiteral("%1: %2, not %3").arg(i).arg(shown).arg(position)));
            }
            velocity += (stiffness * (1 - position) - damping * velocity) * end / steps;
            position += velocity * end / steps;
        }
        QVERIFY(std::abs(1 - position) < 0.0015);
        QCOMPARE(curve.valueForProgress(1), 1.0);
    }

    void aSpringInAnAnimationOvershoots()
    {
        const RenderedScene scene(
            "Item { id: root; property real goal: 0; property real highest: 0\n"
            "property real value: goal; onValueChanged: highest = Math.max(highest, value)\n"
            "Behavior on value { SpringMotion { response: 0.2; dampingFraction: 0.3 } } }");
        QVERIFY(scene.root().setProperty("goal", 100));
        QVERIFY(test::waitUntil([&] { return scene.root().property("value").toReal() == 100; }));
        // The first swing reaches e^(-pi d / sqrt(1 - d^2)) beyond the goal, which is 37 here; frames may
        // miss its top.
        const double highest = scene.root().property("highest").toReal();
        QVERIFY2(highest > 105 && highest < 138, qPrintable(QString::number(highest)));
    }
};

TALVENOR_SCREEN_TEST_MAIN(PaintItemsTest)
#include "PaintItemsTest.moc"
