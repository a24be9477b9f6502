#include "RenderedScene.h"

#include "screens/record/AudioWaveform.h"
#include "screens/record/RecordBackdrop.h"
#include "screens/record/RecordDisc.h"
#include "screens/record/RecordMotion.h"
#include "screens/record/RecordingRings.h"
#include "support/Await.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <numbers>

using namespace talvenor;
using test::RenderedScene;
using test::waitUntil;

namespace {

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

/// A disc's shadow at a distance from its centre, summed up point by point over the plane.
double shadowByPoints(double distance, double radius, double deviation)
{
    double sum = 0;
    for (double y = -radius + 0.5; y < radius; ++y) {
        for (double x = -radius + 0.5; x < radius; ++x) {
            if (std::hypot(x, y) <= radius)
                sum += std::exp(-((x - distance) * (x - distance) + y * y) / (2 * deviation * deviation));
        }
    }
    return sum / (2 * std::numbers::pi * deviation * deviation);
}

int valueChanges = 0;

void countValueChanges(QAccessibleEvent *event)
{
    valueChanges += event->type() == QAccessible::ValueChanged ? 1 : 0;
}

const QByteArray backdropText =
    "RecordBackdrop { width: 900; height: 800; windowColor: '#202020'; firstGlow: '#80ff0000'\n"
    "secondGlow: '#400000ff'; material: '#80c0c0c0' }";

const QByteArray waveformText =
    "Rectangle { width: 500; height: 100; color: '#ffffff'\n"
    "AudioWaveform { objectName: 'waveform'; x: 20; y: 20; width: 340; height: 52\n"
    "lowerColor: '#6b5ce8'; upperColor: '#0a85e3'; isRecording: true\n"
    "Accessible.role: Accessible.ProgressBar; Accessible.name: 'Level' } }";

const QByteArray ringsText =
    "Rectangle { width: 240; height: 240; color: '#ffffff'\n"
    "RecordingRings { objectName: 'rings'; x: 20; y: 20; width: 200; height: 200; color: '#ff0000' } }";

} // namespace

/// What the record screen's own items paint, and when they move.
class RecordPaintTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theBackdropMixesGlowsAndMaterial()
    {
        const RenderedScene scene(backdropText, {900, 800});
        const QImage picture = scene.grab();
        // Reckoned here once more, step by step, in eighths of a shade.
        const auto expected = [](double x, double y) {
            const QPointF first(0.35 * 900, 0.38 * 800);
            const QPointF second(0.68 * 900, 0.62 * 800);
            const auto fade = [x, y](QPointF center, double from, double to) {
                return std::clamp((to - std::hypot(x - center.x(), y - center.y())) / (to - from), 0.0, 1.0);
            };
            QColor color = RenderedScene::over(withOpacity(Qt::red, 128 / 255.0 * fade(first, 40, 360)),
                                               QColor(32, 32, 32));
            color = RenderedScene::over(withOpacity(Qt::blue, 64 / 255.0 * fade(second, 30, 320)), color);
            const auto blended = [](double below) {
                const double above = 192 / 255.0;
                return below <= 0.5 ? 2 * below * above : 1 - 2 * (1 - below) * (1 - above);
            };
            const double share = 128 / 255.0;
            const auto channel = [share, blended](float below) {
                return static_cast<float>(static_cast<double>(below) * (1 - share) +
                                          blended(static_cast<double>(below)) * share);
            };
            return QColor::fromRgbF(channel(color.redF()), channel(color.greenF()), channel(color.blueF()));
        };
        for (const QPointF place : {QPointF(315, 304),
                                    {350, 304},
                                    {400, 304},
                                    {315, 600},
                                    {612, 496},
                                    {640, 496},
                                    {700, 496},
                                    {500, 400},
                                    {2, 2},
                                    {890, 20},
                                    {20, 790}}) {
            TALVENOR_COMPARE_COLOR(scene.colorAt(picture, place), expected(place.x(), place.y()), 2);
        }
    }

    void theBackdropFollowsItsSize()
    {
        const RenderedScene scene("Item { width: 1600; height: 300\n"
                                  "RecordBackdrop { objectName: 'backdrop'; width: 300; height: 200\n"
                                  "windowColor: '#ffffff'; firstGlow: '#ff0000'; secondGlow: 'transparent'\n"
                                  "material: 'transparent' } }",
                                  {1600, 300});
        TALVENOR_COMPARE_COLOR(scene.colorAt({105, 76}), QColor(Qt::red));
        scene.item(QStringLiteral("backdrop")).setSize({1600, 300});
        const QImage picture = scene.grab();
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {560, 114}), QColor(Qt::red));
        // Out of reach of the glow, and out of the picture of it.
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {100, 150}), QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {1590, 290}), QColor(Qt::white));
    }

    void aDiscsShadowIsItsBlur()
    {
        for (const double deviation : {12.0, 16.0, 30.0}) {
            for (const double distance : {0.0, 40.0, 65.0, 70.0, 75.0, 90.0, 120.0, 150.0}) {
                const double strength = RecordDisc::shadowStrength(distance, 70, deviation);
                QVERIFY2(
                    std::abs(strength - shadowByPoints(distance, 70, deviation)) < 0.004,
                    qPrintable(QStringLiteral("%1 at %2: %3").arg(deviation).arg(distance).arg(strength)));
            }
        }
        QVERIFY(std::abs(RecordDisc::shadowStrength(700, 700, 1) - 0.5) < 0.02); // large arguments
    }

    void theDiscHasItsGradientHighlightBorderAndShadows()
    {
        const RenderedScene scene(
            "Rectangle { width: 400; height: 400; color: '#ffffff'\n"
            "RecordDisc { x: 130; y: 130; width: 140; height: 140; startColor: '#6b5ce8'; endColor: "
            "'#0a85e3'\n"
            "shadowColor: '#59000000'; shadowRadius: 24; wideShadowColor: '#26000000' } }",
            {400, 400});
        const QImage picture = scene.grab();
        const QColor purple(107, 92, 232);
        const QColor blue(10, 133, 227);
        const auto mixed = [](const QColor &from, const QColor &to, double share) {
            return RenderedScene::over(withOpacity(to, share), from);
        };
        // Below the centre there is only the gradient; its lines run across the diagonal.
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {200, 220}), mixed(purple, blue, 0.5 + 20 / 280.0), 3);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {160, 240}), mixed(purple, blue, 0.5), 3);
        // The highlight: 0.28 at the top, 0.05 halfway, nothing at the centre.
        TALVENOR_COMPARE_COLOR(
            scene.colorAt(picture, {200, 165}),
            RenderedScene::over(withOpacity(Qt::white, 0.05), mixed(purple, blue, 0.5 - 35 / 280.0)), 3);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {200, 134}),
                               RenderedScene::over(withOpacity(Qt::white, 0.28 - 0.23 * 4 / 35),
                                                   mixed(purple, blue, 0.5 - 66 / 280.0)),
                               4);
        // The border: white above, nothing in the middle, black below.
        const QColor top = RenderedScene::over(withOpacity(Qt::white, 0.28), mixed(purple, blue, 0.25));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {200, 130.6}),
                               RenderedScene::over(withOpacity(Qt::white, 0.3), top), 8);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {130.7, 200}), mixed(purple, blue, 0.25), 8);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {200, 269.3}),
                               RenderedScene::over(withOpacity(Qt::black, 0.08), mixed(purple, blue, 0.75)),
                               8);
        // Shadows: 10 and 4 pixels below.
        const auto shadow = [](double y) {
            const QColor wide =
                withOpacity(Qt::black, 38 / 255.0 * RecordDisc::shadowStrength(std::abs(y - 204), 70, 30));
            const QColor near =
                withOpacity(Qt::black, 89 / 255.0 * RecordDisc::shadowStrength(std::abs(y - 210), 70, 12));
            return RenderedScene::over(near, RenderedScene::over(wide, Qt::white));
        };
        for (const double y : {100.0, 120.0, 280.0, 300.0, 320.0, 350.0})
            TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {200, y}), shadow(y), 3);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {5, 5}), QColor(Qt::white));
    }

    void theArcsBeginAtTheRightAndRunWithTheClock()
    {
        const RenderedScene scene(ringsText, {240, 240});
        const QImage picture = scene.grab();
        const auto strengthAt = [&](double radius, double degrees) {
            const double angle = degrees * std::numbers::pi / 180;
            const QPointF place(120 + radius * std::cos(angle), 120 + radius * std::sin(angle));
            return 1 - scene.colorAt(picture, place).greenF();
        };
        const auto isAbout = [](float actual, double expected) {
            return std::abs(static_cast<double>(actual) - expected) < 0.05;
        };
        // The first arc: to 234 degrees, strongest at 180.
        QVERIFY(isAbout(strengthAt(89, 90), 0.275));
        QVERIFY(isAbout(strengthAt(89, 178), 0.55));
        QVERIFY(isAbout(strengthAt(89, 225), 0.55 * (360 - 225) / 180));
        QVERIFY(isAbout(strengthAt(89, 245), 0));
        QVERIFY(isAbout(strengthAt(89, 300), 0));
        // The second one: to 162 degrees, not as far as its strongest place.
        QVERIFY(isAbout(strengthAt(98, 90), 0.125));
        QVERIFY(isAbout(strengthAt(98, 155), 0.25 * 155 / 180));
        QVERIFY(isAbout(strengthAt(98, 175), 0));
        // The circle, without a level.
        QVERIFY(isAbout(strengthAt(81, 45), 0.15));
        QVERIFY(isAbout(strengthAt(81, 280), 0.15));
    }

    void theArcsTurnOppositeWays()
    {
        const RenderedScene scene(ringsText, {240, 240});
        scene.item(QStringLiteral("rings")).setProperty("ringRotation", 100.0);
        const QImage picture = scene.grab();
        const auto strengthAt = [&](double radius, double degrees) {
            const double angle = degrees * std::numbers::pi / 180;
            const QPointF place(120 + radius * std::cos(angle), 120 + radius * std::sin(angle));
            return static_cast<double>(1 - scene.colorAt(picture, place).greenF());
        };
        QVERIFY(std::abs(strengthAt(89, 278) - 0.55) < 0.05);
        QVERIFY(strengthAt(89, 350) < 0.05);
        QVERIFY(std::abs(strengthAt(98, 90 - 60) - 0.125) < 0.05);
        QVERIFY(strengthAt(98, 120) < 0.05);
    }

    void theCircleWidensWithTheLevelWithinATenthOfASecond()
    {
        const RenderedScene scene(ringsText, {240, 240});
        QQuickItem &rings = scene.item(QStringLiteral("rings"));
        rings.setProperty("audioLevel", 0.5);
        const QColor strong = RenderedScene::over(withOpacity(Qt::red, 0.275), Qt::white);
        const QPointF place(120 + 81 + 8.5, 120 + 0.2);
        QVERIFY(waitUntil([&] {
            // A rotation shows where the level is by now; a whole turn changes nothing else.
            rings.setProperty("ringRotation", rings.property("ringRotation").toDouble() > 0 ? 0 : 360);
            return test::isNear(scene.colorAt(place), strong, 12);
        }));
        // Nothing but 0 to 1 is a level.
        rings.setProperty("audioLevel", 7.0);
        QCOMPARE(rings.property("audioLevel").toDouble(), 1.0);
        rings.setProperty("audioLevel", std::nan(""));
        QCOMPARE(rings.property("audioLevel").toDouble(), 0.0);
    }

    void theBarsStandWhereTheirNumbersSay()
    {
        const RenderedScene scene(waveformText, {500, 100});
        auto &waveform = dynamic_cast<AudioWaveform &>(scene.item(QStringLiteral("waveform")));
        QVERIFY(waitUntil([&] { return waveform.isOnScreen(); }));
        QList<float> values(48, 0.5F);
        values[10] = 0;
        values[47] = 1;
        waveform.setLevels({values});
        QVERIFY(waitUntil([&] { return !waveform.isMoving(); }));
        const QImage picture = scene.grab();
        const double bar = (340 - 117.5) / 48;
        for (const int index : {0, 1, 10, 31, 47}) {
            const QRectF rect = waveform.barRect(index);
            QCOMPARE(rect.left(), index * (bar + 2.5));
            QCOMPARE(rect.width(), bar);
            const double height = index == 10 ? 4 : index == 47 ? 52 : 26;
            QCOMPARE(rect.height(), height);
            QCOMPARE(rect.center().y(), 26.0);
            // From purple below to blue above, the blue a little weaker.
            const double alpha = WaveformShape::barOpacity(index, height, 52);
            const QPointF middle = rect.center() + QPointF(20, 20);
            const auto at = [&](double share) {
                const QColor purple = withOpacity({107, 92, 232}, alpha);
                const QColor blue = withOpacity({10, 133, 227}, alpha * 0.85);
                const auto channel = [share](float from, float fromAlpha, float to, float toAlpha) {
                    return static_cast<double>(from * fromAlpha) * (1 - share) +
                           static_cast<double>(to * toAlpha) * share;
                };
                const double white = 1 - (alpha * (1 - share) + alpha * 0.85 * share);
                return QColor::fromRgbF(
                    static_cast<float>(channel(purple.redF(), purple.alphaF(), blue.redF(), blue.alphaF()) +
                                       white),
                    static_cast<float>(
                        channel(purple.greenF(), purple.alphaF(), blue.greenF(), blue.alphaF()) + white),
                    static_cast<float>(channel(purple.blueF(), purple.alphaF(), blue.blueF(), blue.alphaF()) +
                                       white));
            };
            const double scale = picture.devicePixelRatio();
            const double row = (std::floor(middle.y() * scale) + 0.5) / scale;
            TALVENOR_COMPARE_COLOR(scene.colorAt(picture, middle), at((rect.bottom() + 20 - row) / height),
                                   3);
            if (height > 20) {
                const double upper = rect.top() + 20 + 5.5 / scale + 3;
                const double upperRow = (std::floor(upper * scale) + 0.5) / scale;
                TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {middle.x(), upper}),
                                       at((rect.bottom() + 20 - upperRow) / height), 3);
            }
            // Above and between there is nothing.
            TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {rect.right() + 20 + 1.25, 46}), QColor(Qt::white),
                                   1);
            if (height < 40) {
                TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {middle.x(), rect.top() + 20 - 1.1}),
                                       QColor(Qt::white), 1);
            }
        }
    }

    void withoutASessionBarsAreFaint()
    {
        const RenderedScene scene(waveformText, {500, 100});
        auto &waveform = dynamic_cast<AudioWaveform &>(scene.item(QStringLiteral("waveform")));
        QVERIFY(waitUntil([&] { return waveform.isOnScreen(); }));
        waveform.setLevels({QList<float>(48, 1.0F)});
        waveform.setIsRecording(false);
        QVERIFY(waitUntil([&] { return !waveform.isMoving(); }));
        const QImage picture = scene.grab();
        const double middle = waveform.barRect(20).center().x() + 20;
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {middle, 20 + 49}),
                               RenderedScene::over(withOpacity({107, 92, 232}, 0.18), Qt::white), 4);
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {middle, 20 + 3}),
                               RenderedScene::over(withOpacity({10, 133, 227}, 0.12), Qt::white), 4);
    }

    void barsThatNeedMoreRoomThanThereIsOverflowOnBothSides()
    {
        const RenderedScene scene(waveformText, {500, 100});
        auto &waveform = dynamic_cast<AudioWaveform &>(scene.item(QStringLiteral("waveform")));
        QVERIFY(waitUntil([&] { return waveform.isOnScreen(); }));
        waveform.setX(120);
        waveform.setWidth(100);
        waveform.setLevels({QList<float>(48, 1.0F)});
        QVERIFY(waitUntil([&] { return !waveform.isMoving(); }));
        QCOMPARE(waveform.barRect(0).width(), 3.0);
        QCOMPARE(waveform.barRect(0).left(), (100 - 261.5) / 2);
        QCOMPARE(waveform.barRect(47).right(), 100 + (261.5 - 100) / 2);
        const QImage picture = scene.grab();
        QVERIFY(scene.colorAt(picture, {120 - 80.75 + 1.5, 46}) != QColor(Qt::white));
        QVERIFY(scene.colorAt(picture, {120 + 100 + 80.75 - 1.5, 46}) != QColor(Qt::white));
        TALVENOR_COMPARE_COLOR(scene.colorAt(picture, {120 - 83, 46}), QColor(Qt::white));
    }

    void onlyAChangeOfTheirNumberMovesTheBars()
    {
        const RenderedScene scene(waveformText, {500, 100});
        auto &waveform = dynamic_cast<AudioWaveform &>(scene.item(QStringLiteral("waveform")));
        QVERIFY(waitUntil([&] { return waveform.isOnScreen(); }));
        QVERIFY(!waveform.isMoving());
        waveform.setLevels({QList<float>(50, 0.2F)});
        QVERIFY(waveform.isMoving());
        QVERIFY(waitUntil([&] { return !waveform.isMoving(); }));
        waveform.setLevels({QList<float>(50, 0.9F)});
        QVERIFY(!waveform.isMoving());
        const QImage picture = scene.grab();
        QVERIFY(scene.colorAt(picture, {waveform.barRect(20).center().x() + 20, 46 - 20}) !=
                QColor(Qt::white));
    }

    void nothingMovesThatCannotBeSeen()
    {
        const RenderedScene scene(waveformText, {500, 100});
        auto &waveform = dynamic_cast<AudioWaveform &>(scene.item(QStringLiteral("waveform")));
        QVERIFY(waitUntil([&] { return waveform.isOnScreen(); }));
        waveform.setVisible(false);
        waveform.setLevels({{0.5F}});
        QVERIFY(!waveform.isMoving());
        waveform.setVisible(true);
        scene.window().showMinimized();
        QVERIFY(waitUntil([&] { return scene.window().visibility() == QWindow::Minimized; }));
        waveform.setLevels({{0.5F, 0.6F}});
        QVERIFY(!waveform.isMoving());
        scene.window().hide();
        waveform.setLevels({{0.5F, 0.6F, 0.7F}});
        QVERIFY(!waveform.isMoving());
    }

    void theLevelCanBeAskedForAndIsNotAnnounced()
    {
        const RenderedScene scene(waveformText, {500, 100});
        auto &waveform = dynamic_cast<AudioWaveform &>(scene.item(QStringLiteral("waveform")));
        QVERIFY(waitUntil([&] { return waveform.isOnScreen(); }));
        QAccessibleInterface *const meter =
            scene.accessible(QAccessible::ProgressBar, QStringLiteral("Level"));
        QVERIFY(meter);
        valueChanges = 0;
        const QAccessible::UpdateHandler previous = QAccessible::installUpdateHandler(countValueChanges);
        waveform.setLevels({{0.5F, 0.25F}});
        waveform.setLevels({{0.5F, 0.25F, 0.75F}});
        QCoreApplication::processEvents();
        QAccessible::installUpdateHandler(previous);
        QCOMPARE(valueChanges, 0);
        QVERIFY(meter->valueInterface());
        QCOMPARE(meter->valueInterface()->currentValue().toDouble(), 0.75);
        QCOMPARE(meter->valueInterface()->minimumValue().toDouble(), 0.0);
        QCOMPARE(meter->valueInterface()->maximumValue().toDouble(), 1.0);
    }

    void aDigitThatChangesRollsAndTheOthersStand()
    {
        const QByteArray text = "RollingDigits { text: '00:01'; width: 200; height: 80; font.pixelSize: 40\n"
                                "font.family: Theme.monospaced }";
        QImage after;
        {
            const RenderedScene still(text, {240, 100});
            still.root().setProperty("isAnimated", false);
            still.root().setProperty("text", QStringLiteral("00:02"));
            after = still.grab();
        }
        const RenderedScene scene(text, {240, 100});
        QQuickItem &digits = scene.root();
        const QImage before = scene.grab();
        QVERIFY(after != before);
        digits.setProperty("text", QStringLiteral("00:02"));
        // On its way it is neither, and what has not changed is as it was.
        const QImage between = scene.grab();
        QVERIFY(between != after);
        const int unchanged = static_cast<int>(before.width() * digits.implicitWidth() / 240 * 0.78);
        const QRect firstFour(0, 0, unchanged, before.height());
        QCOMPARE(between.copy(firstFour), before.copy(firstFour));
        QVERIFY(waitUntil([&] { return scene.grab() == after; }));
    }

    void anHourNeedsMoreDigits()
    {
        const RenderedScene scene("RollingDigits { text: '59:59'; font.pixelSize: 40 }", {400, 100});
        const double width = scene.root().implicitWidth();
        scene.root().setProperty("text", QStringLiteral("1:00:00"));
        QVERIFY(std::abs(scene.root().implicitWidth() - width * 7 / 5) <= 2);
        QVERIFY(scene.accessible(QAccessible::StaticText, QStringLiteral("1:00:00")));
    }

    void theSourcesAreToldWithTheirColour()
    {
        const RenderedScene scene("SourceIndicator { hasSystemAudio: true }", {400, 100});
        const QQuickItem &words = scene.item(QStringLiteral("source"));
        const QQuickItem &dot = scene.item(QStringLiteral("sourceDot"));
        QCOMPARE(words.property("text").toString(), QStringLiteral("Microphone + System Audio"));
        QCOMPARE(dot.property("color").value<QColor>(), scene.themeColor("green"));
        scene.setLanguage(AppLanguage::german);
        QCOMPARE(words.property("text").toString(), QStringLiteral("Mikrofon + System-Audio"));
        scene.root().setProperty("hasSystemAudio", false);
        QCOMPARE(words.property("text").toString(),
                 QStringLiteral("Nur Mikrofon (System-Audio nicht verfuegbar)"));
        QVERIFY(
            waitUntil([&] { return dot.property("color").value<QColor>() == scene.themeColor("orange"); }));
        QVERIFY(waitUntil([&] { return scene.root().width() >= words.implicitWidth() + 36; }));
    }

    void aStatusOfAnyLengthStaysInItsCapsule()
    {
        const RenderedScene scene("ProcessingCapsule { width: 400; isProcessing: true; text: 'a' }",
                                  {400, 120});
        const QQuickItem &capsule = scene.item(QStringLiteral("processingCapsule"));
        const double height = capsule.height();
        scene.root().setProperty("text", QString(3'000'000, u'x') + QStringLiteral("\n\tend"));
        QCOMPARE(capsule.width(), 360.0);
        QCOMPARE(capsule.height(), height);
        scene.root().setProperty("text", QStringLiteral("first\nsecond"));
        QCOMPARE(capsule.height(), height);
    }

    void ringsTurnInFourSecondsAndTheGlowBreathes()
    {
        QCOMPARE(RecordMotion::ringRotationAt(0), 0.0);
        QCOMPARE(RecordMotion::ringRotationAt(1000), 90.0);
        QCOMPARE(RecordMotion::ringRotationAt(3999), 359.91);
        QCOMPARE(RecordMotion::ringRotationAt(4000), 0.0); // over again, not back
        QCOMPARE(RecordMotion::ringRotationAt(9000), 90.0);
        QCOMPARE(RecordMotion::glowPhaseAt(0), 0.0);
        QCOMPARE(RecordMotion::glowPhaseAt(1200), 0.5);
        QCOMPARE(RecordMotion::glowPhaseAt(2400), 1.0);
        QCOMPARE(RecordMotion::glowPhaseAt(3600), 0.5);
        QCOMPARE(RecordMotion::glowPhaseAt(4800), 0.0);
        QCOMPARE(RecordMotion::glowPhaseAt(600), 0.1); // ease-in-out is at 0.129 after a quarter
        QCOMPARE(RecordMotion::glowPhaseAt(1800), 0.9);
    }

    void theMotionRunsOnlyWhileItsItemCanBeSeen()
    {
        const RenderedScene scene("RecordMotion { width: 1; height: 1 }");
        auto &motion = dynamic_cast<RecordMotion &>(scene.root());
        QVERIFY(waitUntil([&] { return motion.isMoving(); }));
        QVERIFY(waitUntil([&] { return motion.moment() > 0; }));
        motion.setVisible(false);
        QVERIFY(!motion.isMoving());
        motion.setVisible(true);
        QVERIFY(motion.isMoving());
        scene.window().showMinimized();
        QVERIFY(waitUntil([&] { return !motion.isMoving(); }));
        scene.window().showNormal();
        QVERIFY(waitUntil([&] { return motion.isMoving(); }));
        scene.window().hide();
        QVERIFY(!motion.isMoving());
        const qint64 moment = motion.moment();
        scene.window().show();
        QVERIFY(waitUntil([&] { return motion.isMoving(); }));
        QVERIFY(motion.moment() >= moment);
    }

    void theMotionCanBeHeldAndMoved()
    {
        const RenderedScene scene("RecordMotion { width: 1; height: 1 }");
        auto &motion = dynamic_cast<RecordMotion &>(scene.root());
        motion.setMotionEnabled(false);
        QVERIFY(!motion.isMoving());
        motion.setMoment(0);
        const QSignalSpy rotations(&motion, &RecordMotion::ringRotationChanged);
        const QSignalSpy phases(&motion, &RecordMotion::glowPhaseChanged);
        motion.setMoment(1000);
        QCOMPARE(motion.ringRotation(), 90.0);
        QCOMPARE(rotations.size(), 1);
        QCOMPARE(phases.size(), 1);
        motion.setMoment(1001); // the same shade of the glow
        QCOMPARE(rotations.size(), 2);
        QCOMPARE(phases.size(), 1);
    }
};

TALVENOR_SCREEN_TEST_MAIN(RecordPaintTest)
#include "RecordPaintTest.moc"
