#include "screens/record/WaveformShape.h"
#include "screens/record/Easing.h"

#include <QEasingCurve>
#include <QTest>

using namespace talvenor;

namespace {

/// 0, 0.1, ... 0.9, 0, ...
QList<float> sawtooth(int count)
{
    QList<float> levels;
    for (int i = 0; i < count; ++i)
        levels.append(static_cast<float>(i % 10) / 10);
    return levels;
}

bool isClose(float actual, float expected)
{
    return std::abs(actual - expected) < 1e-6F;
}

WaveformMotion::Heights filled(double height)
{
    WaveformMotion::Heights heights{};
    heights.fill(height);
    return heights;
}

} // namespace

/// The numbers behind the waveform. The tables come from a separate calculation that rounds to 32 bits after
/// each step.
class WaveformShapeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void barsShareTheWidthDownToThreePixels()
    {
        QCOMPARE(WaveformShape::barWidth(340), (340 - 117.5) / 48);
        QCOMPARE(WaveformShape::barWidth(261.5), 3.0);
        QCOMPARE(WaveformShape::barWidth(261), 3.0);
        QCOMPARE(WaveformShape::barWidth(0), 3.0);
    }

    void theNewestLevelStandsAtTheRightEnd()
    {
        const QList<float> levels = sawtooth(48);
        for (int i = 0; i < 48; ++i)
            QCOMPARE(WaveformShape::barLevel(i, levels, true, 0), levels.at(i));
        QCOMPARE(WaveformShape::barLevel(47, {0.25F}, true, 0), 0.25F);
        // Levels are levels, whether the session still runs or not.
        QCOMPARE(WaveformShape::barLevel(47, {0.25F}, false, 0), 0.25F);
    }

    void ofMoreLevelsThanBarsTheLastAreShown()
    {
        const QList<float> levels = sawtooth(50);
        for (int i = 0; i < 48; ++i)
            QCOMPARE(WaveformShape::barLevel(i, levels, true, 0), levels.at(i + 2));
    }

    void barsWithoutALevelEchoTheNewest()
    {
        struct Row
        {
            int count;
            int index;
            float level;
        };
        constexpr Row table[] = {
            {1, 0, 0.295906752F},  {1, 1, 0.458074301F},  {1, 5, 0.799761236F},   {1, 17, 0.734734535F},
            {1, 26, 0.799407184F}, {1, 39, 0.628373563F}, {1, 46, 0.784324288F},  {8, 0, 0.561504483F},
            {8, 1, 0.64669162F},   {8, 5, 0.575395525F},  {8, 17, 0.393199325F},  {8, 26, 0.569854438F},
            {8, 39, 0.242497265F}, {20, 0, 0.842857361F}, {20, 1, 0.739794254F},  {20, 5, 0.49099341F},
            {20, 17, 0.72925061F}, {20, 26, 0.50088191F}, {20, 27, 0.663794696F}, {47, 0, 0.599967778F},
        };
        for (const Row &row : table) {
            const QList<float> levels = row.count == 1 ? QList<float>{0.8F} : sawtooth(row.count);
            const float level = WaveformShape::barLevel(row.index, levels, true, 0);
            QVERIFY2(
                isClose(level, row.level),
                qPrintable(QStringLiteral("%1 levels, bar %2: %3").arg(row.count).arg(row.index).arg(level)));
        }
    }

    void anEchoIsNeverLessThanATwentieth()
    {
        QCOMPARE(WaveformShape::barLevel(0, {0.0F}, true, 0), 0.05F);
        QCOMPARE(WaveformShape::barLevel(0, {0.01F}, true, 0), 0.05F);
    }

    void withoutLevelsBarsTakeTheIdleShape_data()
    {
        QTest::addColumn<float>("seconds");
        QTest::addColumn<int>("index");
        QTest::addColumn<float>("level");
        QTest::newRow("first") << 10.0F << 0 << 0.0491784848F;
        QTest::newRow("second") << 10.0F << 1 << 0.0481153317F;
        QTest::newRow("eighth") << 10.0F << 7 << 0.0346215516F;
        QTest::newRow("middle") << 10.0F << 33 << 0.0400281139F;
        QTest::newRow("last") << 10.0F << 47 << 0.0398745388F;
        // So many seconds since 1970 leave no room in 32 bits for a bar's place.
        QTest::newRow("today, first") << 1795182345.5F << 0 << 0.0499350727F;
        QTest::newRow("today, last") << 1795182345.5F << 47 << 0.0499350727F;
    }

    void withoutLevelsBarsTakeTheIdleShape()
    {
        QFETCH(const float, seconds);
        QFETCH(const int, index);
        QFETCH(const float, level);
        QVERIFY(isClose(WaveformShape::barLevel(index, {}, true, seconds), level));
        QVERIFY(isClose(WaveformShape::barLevel(index, {}, false, seconds), level));
        // Not recording, bars without a level of their own are idle too.
        if (index < 47) {
            QVERIFY(isClose(WaveformShape::barLevel(index, {0.9F}, false, seconds), level));
        }
    }

    void aBarIsAtLeastFourPixelsHigh()
    {
        QCOMPARE(WaveformShape::barHeight(0.5F, 52), 26.0);
        QCOMPARE(WaveformShape::barHeight(0, 52), 4.0);
        QCOMPARE(WaveformShape::barHeight(0.05F, 52), 4.0);
        QCOMPARE(WaveformShape::barHeight(1, 52), 52.0);
    }

    void barsGrowStrongerToTheRightAndWithTheirHeight()
    {
        QCOMPARE(WaveformShape::barOpacity(0, 0, 52), 0.45);
        QCOMPARE(WaveformShape::barOpacity(0, 52, 52), 0.65);
        QCOMPARE(WaveformShape::barOpacity(24, 26, 52), 0.45 + 0.175 + 0.1);
        QCOMPARE(WaveformShape::barOpacity(24, 99, 52), 0.45 + 0.175 + 0.2);
        QCOMPARE(WaveformShape::barOpacity(0, 4, 0), 0.65); // a height of 0 counts as 1
        // The last bar is not quite at the end of the scale.
        QCOMPARE(WaveformShape::barOpacity(47, 52, 52), 0.45 + 0.35 * 47 / 48 + 0.2);
    }

    void easingIsThatOfTheCurve()
    {
        QEasingCurve out(QEasingCurve::BezierSpline);
        out.addCubicBezierSegment({0, 0}, {0.58, 1}, {1, 1});
        QEasingCurve inOut(QEasingCurve::BezierSpline);
        inOut.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
        for (int i = 0; i <= 20; ++i) {
            const double place = i / 20.0;
            QVERIFY(std::abs(Easing::out(place) - out.valueForProgress(place)) < 1e-3);
            QVERIFY(std::abs(Easing::inOut(place) - inOut.valueForProgress(place)) < 1e-3);
        }
        QCOMPARE(Easing::out(-1), 0.0);
        QCOMPARE(Easing::inOut(2), 1.0);
    }

    void aChangeRunsAcrossTheBarsFromLeftToRight()
    {
        WaveformMotion motion;
        motion.setTarget(filled(4), false, 0);
        motion.setTarget(filled(24), true, 1000);
        QCOMPARE(motion.at(1000), filled(4));
        const WaveformMotion::Heights before = motion.at(1000 + 60);
        QCOMPARE(before[0], 4 + 20 * Easing::out(0.5));
        QCOMPARE(before[5], 4 + 20 * Easing::out(40 / 120.0));
        QCOMPARE(before[15], 4.0); // begins after 60 ms
        QVERIFY(motion.at(1000 + 61)[15] > 4);
        QCOMPARE(motion.at(1000 + 120)[0], 24.0);
        QVERIFY(motion.at(1000 + 120 + 187)[47] < 24);
        QCOMPARE(motion.at(1000 + 120 + 188), filled(24));
        QVERIFY(motion.isMoving(1000 + 307));
        QVERIFY(!motion.isMoving(1000 + 308));
    }

    void aChangeWithoutMotionIsThereAtOnce()
    {
        WaveformMotion motion;
        motion.setTarget(filled(30), false, 0);
        QCOMPARE(motion.at(0), filled(30));
        QVERIFY(!motion.isMoving(0));
    }

    void changesInQuickSuccessionHoldNoBarBack()
    {
        WaveformMotion motion;
        motion.setTarget(filled(0), false, 0);
        // The last bar begins after 188 ms, and the next change is there after 50.
        for (int i = 1; i <= 40; ++i)
            motion.setTarget(filled(i), true, i * 50);
        QVERIFY(motion.at(2000)[47] > 30);
        // A motion that is under way is not broken off by a jump.
        const double shown = motion.at(2010)[47];
        motion.setTarget(filled(50), false, 2010);
        QCOMPARE(motion.at(2010)[47], shown + 10);
        QCOMPARE(motion.at(2400), filled(50));
    }
};

QTEST_GUILESS_MAIN(WaveformShapeTest)
#include "WaveformShapeTest.moc"
