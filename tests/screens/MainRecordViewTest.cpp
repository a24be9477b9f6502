#include "RenderedScene.h"

#include "recorderfakes/RecorderFixture.h"
#include "screens/ContentState.h"
#include "screens/RecordState.h"
#include "screens/record/AudioWaveform.h"
#include "screens/record/RecordMotion.h"
#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "support/Await.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>

using namespace talvenor;
using test::RecorderFixture;
using test::RenderedScene;
using test::waitUntil;

namespace {

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

QJsonObject plan(const char *tier, int count, int limit)
{
    return {{QStringLiteral("subscription_tier"), QString::fromLatin1(tier)},
            {QStringLiteral("recordings_count"), count},
            {QStringLiteral("recordings_limit"), limit},
            {QStringLiteral("can_record"), true}};
}

/// The screen in a window, on a view model of its own.
class Screen
{
public:
    explicit Screen(const QJsonObject &profile = {}, QSize size = {800, 660})
        : state((fixture.signIn(profile), fixture.start())),
          scene("MainRecordView {}", size, {{QStringLiteral("record"), QVariant::fromValue(&state)}})
    {
    }

    [[nodiscard]] QQuickItem &item(const char *name) const { return scene.item(QString::fromLatin1(name)); }
    [[nodiscard]] QRectF rect(const char *name) const { return RenderedScene::rect(item(name)); }
    [[nodiscard]] QString text(const char *name) const { return item(name).property("text").toString(); }
    [[nodiscard]] QColor color(const char *name) const
    {
        return item(name).property("color").value<QColor>();
    }
    [[nodiscard]] QFont font(const char *name) const { return item(name).property("font").value<QFont>(); }
    [[nodiscard]] bool isVisible(const char *name) const { return item(name).isVisible(); }

    /// Stands still where the rings begin and the glow is weakest.
    void hold(qint64 moment = 0) const
    {
        auto &motion = dynamic_cast<RecordMotion &>(item("motion"));
        motion.setMotionEnabled(false);
        motion.setMoment(moment);
    }

    /// Starts or stops, and waits until the look has changed altogether.
    void setRecording(bool isRecording)
    {
        if (state.isRecording() != isRecording)
            state.toggleRecording();
        QVERIFY(waitUntil([&] { return state.isRecording() == isRecording; }));
        QVERIFY(waitUntil([&] {
            const double look = isRecording ? 1 : 0;
            return item("recordButton").property("look").toDouble() == look &&
                   item("recordButton").property("glowLook").toDouble() == look &&
                   item("recordButton").property("iconLook").toDouble() == look &&
                   item("status").property("look").toDouble() == look &&
                   item("waveformSection").property("look").toDouble() == look;
        }));
    }

    void startProcessing()
    {
        // The recogniser of the fixture answers only when it is told to.
        RecorderViewModel &model = *fixture.viewModel;
        startTask(&model, [&model] { return model.transcribeRecording(model.recordings().constFirst()); });
        QVERIFY(waitUntil([&] { return state.isProcessing(); }));
        QVERIFY(waitUntil([&] { return item("processing").property("presence").toDouble() == 1; }));
    }

    RecorderFixture fixture;
    RecordState state;
    RenderedScene scene;
};

} // namespace

/// The record screen, laid out, painted and operated.
class MainRecordViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theReadyLook()
    {
        Screen screen;
        QCOMPARE(screen.text("caption"), QStringLiteral("Ready to Record"));
        QCOMPARE(screen.color("caption"), screen.scene.themeColor("secondary"));
        QCOMPARE(screen.text("hint"), QStringLiteral("Click to Start"));
        QCOMPARE(screen.color("hint"), screen.scene.themeColor("tertiary"));
        QVERIFY(screen.isVisible("hint"));
        QVERIFY(screen.isVisible("idleRing"));
        QVERIFY(screen.isVisible("idleDisc"));
        for (const char *const name : {"timer", "waveform", "sourceIndicator", "recordingRings",
                                       "recordingDisc", "recordingGlow", "processing", "banner"})
            QVERIFY2(!screen.isVisible(name), name);
        QCOMPARE(screen.rect("icon").size(), QSizeF(44, 44));
        QCOMPARE(screen.item("icon").property("radius").toDouble(), 22.0);
    }

    void theRecordingLook()
    {
        Screen screen;
        screen.setRecording(true);
        QCOMPARE(screen.text("caption"), QStringLiteral("Recording in Progress"));
        QCOMPARE(screen.color("caption"), screen.scene.themeColor("redText"));
        for (const char *const name :
             {"timer", "waveform", "sourceIndicator", "recordingRings", "recordingDisc", "recordingGlow"})
            QVERIFY2(screen.isVisible(name), name);
        for (const char *const name : {"hint", "idleRing", "idleDisc", "idleGlow"})
            QVERIFY2(!screen.isVisible(name), name);
        QCOMPARE(screen.rect("icon").size(), QSizeF(34, 34));
        QCOMPARE(screen.item("icon").property("radius").toDouble(), 8.0);
        QVERIFY(waitUntil([&] { return screen.text("timer") == screen.state.formattedDuration(); }));
        screen.setRecording(false);
        QCOMPARE(screen.text("caption"), QStringLiteral("Ready to Record"));
        QVERIFY(!screen.isVisible("waveform"));
        QVERIFY(screen.isVisible("idleDisc"));
    }

    void textsHaveTheirStyles()
    {
        Screen screen;
        QCOMPARE(screen.font("caption").pixelSize(), 15);
        QCOMPARE(screen.font("caption").weight(), QFont::DemiBold);
        QCOMPARE(screen.font("caption").capitalization(), QFont::AllUppercase);
        QCOMPARE(screen.font("caption").letterSpacing(), 2.0);
        QCOMPARE(screen.font("timer").pixelSize(), 64);
        QCOMPARE(screen.font("timer").weight(), QFont::Thin);
        QCOMPARE(screen.font("timer").family(), screen.scene.theme().property("monospaced").toString());
        QCOMPARE(screen.color("timer"), screen.scene.themeColor("primary"));
        QCOMPARE(screen.font("source").pixelSize(), 13);
        QCOMPARE(screen.color("source"), screen.scene.themeColor("secondary"));
        QCOMPARE(screen.font("hint").pixelSize(), 15);
        QCOMPARE(screen.font("hint").weight(), QFont::Normal);
        QCOMPARE(screen.font("processingStatus").pixelSize(), 14);
        QCOMPARE(screen.font("processingStatus").weight(), QFont::Medium);
        QCOMPARE(screen.color("processingStatus"), screen.scene.themeColor("secondary"));
    }

    void thePartsStandInTheMiddleOneBelowTheOther()
    {
        Screen screen; // of a premium user: neither banner nor usage line
        const QRectF button = screen.rect("recordButton");
        QCOMPARE(button.size(), QSizeF(200, 200));
        QCOMPARE(button.center().x(), 400.0);
        QVERIFY(std::abs(button.top() - screen.rect("status").bottom() - 40) <= 1);
        QVERIFY(std::abs(screen.rect("waveformSection").top() - button.bottom() - 40) <= 1);
        QCOMPARE(screen.rect("waveformSection").height(), 52.0);
        QVERIFY(std::abs(screen.rect("hint").center().y() - screen.rect("waveformSection").center().y()) <=
                1);
        const double middle = (screen.rect("status").top() + screen.rect("waveformSection").bottom()) / 2;
        QVERIFY(std::abs(middle - 330) <= 1.5);

        screen.setRecording(true);
        QVERIFY(std::abs(screen.rect("timer").top() - screen.rect("caption").bottom() - 8) <= 1);
        QVERIFY(std::abs(screen.rect("recordButton").top() - screen.rect("timer").bottom() - 40) <= 1.5);
        QCOMPARE(screen.rect("waveform").size(), QSizeF(340, 52));
        QCOMPARE(screen.rect("waveform").center().x(), 400.0);
        QCOMPARE(screen.rect("sourceIndicator").top() - screen.rect("waveform").bottom(), 16.0);
        QCOMPARE(screen.rect("sourceDot").size(), QSizeF(6, 6));
        QCOMPARE(screen.rect("sourceDot").left() - screen.rect("sourceIndicator").left(), 12.0);
        QCOMPARE(screen.rect("source").left() - screen.rect("sourceDot").right(), 6.0);
        QVERIFY(std::abs(screen.rect("sourceIndicator").height() - screen.rect("source").height() - 10) <= 1);
        const double below = screen.rect("sourceIndicator").bottom();
        QVERIFY(std::abs((screen.rect("status").top() + below) / 2 - 330) <= 1.5);
    }

    void theCaptionIsCentredOnItsLetters()
    {
        Screen screen;
        // The space that follows the last letter is none of its width.
        QVERIFY(std::abs(screen.rect("caption").center().x() - 401) <= 0.5);
    }

    void theRingsAndTheGlowHaveTheirSizes()
    {
        Screen screen;
        screen.hold();
        QCOMPARE(screen.rect("idleGlow").size(), QSizeF(364, 364));
        QCOMPARE(screen.item("idleGlow").property("startRadius").toDouble(), 35.0);
        QCOMPARE(screen.item("idleGlow").property("endRadius").toDouble(), 182.0);
        QCOMPARE(screen.rect("idleRing").size(), QSizeF(162, 162));
        QCOMPARE(screen.item("idleRing").property("lineWidth").toDouble(), 1.5);
        QCOMPARE(screen.rect("idleDisc").size(), QSizeF(140, 140));
        for (const char *const name : {"idleGlow", "idleRing", "idleDisc", "icon"}) {
            QCOMPARE(
                screen.item(name).mapToScene({screen.item(name).width() / 2, screen.item(name).height() / 2}),
                screen.rect("recordButton").center());
        }
    }

    void theIdleLookBreathes()
    {
        Screen screen;
        screen.hold(0);
        QCOMPARE(screen.item("idleGlow").opacity(), 0.12 / 0.16);
        QCOMPARE(screen.item("idleRing").opacity(), 0.7);
        QCOMPARE(screen.item("idleRing").rotation(), 0.0);
        const QColor weakest = screen.scene.colorAt(screen.rect("recordButton").center() + QPointF(0, -110));
        screen.hold(2400);
        QCOMPARE(screen.item("idleGlow").opacity(), 1.0);
        QCOMPARE(screen.item("idleRing").opacity(), 1.0);
        QCOMPARE(screen.item("idleRing").rotation(), 360 * 0.6 * 0.15);
        QVERIFY(screen.scene.colorAt(screen.rect("recordButton").center() + QPointF(0, -110)) != weakest);
    }

    void theGlowHasItsOpacity_data()
    {
        QTest::addColumn<bool>("isDark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }

    void theGlowHasItsOpacity()
    {
        QFETCH(const bool, isDark);
        Screen screen;
        screen.scene.setScheme(isDark ? ColorScheme::dark : ColorScheme::light);
        screen.hold(2400);
        // Beside the shadows of the disc, 160 pixels from its centre, the glow is nearly alone.
        const QPointF place = screen.rect("recordButton").center() + QPointF(0, -165);
        for (const char *const name : {"idleDisc", "idleRing", "status"})
            screen.item(name).setVisible(false);
        screen.item("idleGlow").setVisible(false);
        const QColor background = screen.scene.colorAt(place);
        const QColor middle = screen.scene.colorAt(screen.rect("recordButton").center() + QPointF(0, -100));
        screen.item("idleGlow").setVisible(true);
        const QColor purple = screen.scene.themeColor("purple");
        const auto strength = [](double radius) { return 0.16 * (182 - radius) / (182 - 35); };
        TALVENOR_COMPARE_COLOR(screen.scene.colorAt(place),
                               RenderedScene::over(withOpacity(purple, strength(165)), background), 2);
        TALVENOR_COMPARE_COLOR(screen.scene.colorAt(screen.rect("recordButton").center() + QPointF(0, -100)),
                               RenderedScene::over(withOpacity(purple, strength(100)), middle), 2);
    }

    void theBackgroundHasTheGlowsOfItsScheme_data() { theGlowHasItsOpacity_data(); }

    void theBackgroundHasTheGlowsOfItsScheme()
    {
        QFETCH(const bool, isDark);
        Screen screen({}, {1400, 860});
        screen.scene.setScheme(isDark ? ColorScheme::dark : ColorScheme::light);
        for (const char *const name : {"recordButton", "status", "waveformSection"})
            screen.item(name).setVisible(false);
        const QImage picture = screen.scene.grab();
        const double strength = isDark ? 0.07 : 0.035;
        const QColor material = screen.scene.themeColor("material");
        const auto expected = [&](QPointF place) {
            const auto fade = [place](QPointF center, double from, double to) {
                const double distance = std::hypot(place.x() - center.x(), place.y() - center.y());
                return std::clamp((to - distance) / (to - from), 0.0, 1.0);
            };
            const double first = strength * fade({0.35 * 1400, 0.38 * 860}, 40, 360);
            const double second = strength * 0.8 * fade({0.68 * 1400, 0.62 * 860}, 30, 320);
            const QColor below =
                RenderedScene::over(withOpacity(screen.scene.themeColor("blue"), second),
                                    RenderedScene::over(withOpacity(screen.scene.themeColor("purple"), first),
                                                        screen.scene.themeColor("windowBackground")));
            const float share = material.alphaF() * 0.35F;
            const auto channel = [share](float base, float over) {
                const float blended = base <= 0.5F ? 2 * base * over : 1 - 2 * (1 - base) * (1 - over);
                return base + (blended - base) * share;
            };
            return QColor::fromRgbF(channel(below.redF(), material.redF()),
                                    channel(below.greenF(), material.greenF()),
                                    channel(below.blueF(), material.blueF()));
        };
        for (const QPointF place : {QPointF(490, 327),
                                    {560, 327},
                                    {490, 500},
                                    {952, 533},
                                    {1050, 533},
                                    {720, 430},
                                    {4, 4},
                                    {1390, 850}})
            TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, place), expected(place), 2);
    }

    void aFreeAccountSeesTheBanner()
    {
        Screen screen(plan("free", 1, 3));
        const QRectF banner = screen.rect("banner");
        QCOMPARE(banner.topLeft(), QPointF(20, 12));
        QCOMPARE(banner.right(), 780.0);
        QCOMPARE(screen.rect("crown").left() - banner.left(), 16.0);
        QCOMPARE(screen.rect("bannerHeadline").left() - screen.rect("crown").right(), 10.0);
        QCOMPARE(screen.rect("bannerHeadline").top() - banner.top(), 10.0);
        QCOMPARE(screen.rect("bannerSubline").top() - screen.rect("bannerHeadline").bottom(), 2.0);
        QCOMPARE(banner.bottom() - screen.rect("bannerSubline").bottom(), 10.0);
        QCOMPARE(banner.right() - screen.rect("chevron").right(), 16.0);
        QCOMPARE(screen.rect("chevron").left() - screen.rect("pricePill").right(), 10.0);
        // The pill ends on whole pixels.
        QVERIFY(std::abs(screen.rect("price").left() - screen.rect("pricePill").left() - 8) < 1);
        QCOMPARE(screen.rect("price").top() - screen.rect("pricePill").top(), 4.0);
        QCOMPARE(screen.text("bannerHeadline"), QStringLiteral("Upgrade to Premium"));
        QCOMPARE(screen.text("bannerSubline"), QStringLiteral("Unlimited recordings, AI summaries & more"));
        QCOMPARE(screen.text("price"), QStringLiteral("From 8.99€/mo"));
        QCOMPARE(screen.font("bannerHeadline").weight(), QFont::DemiBold);
        QCOMPARE(screen.font("bannerHeadline").pixelSize(), 12);
        QCOMPARE(screen.font("bannerSubline").pixelSize(), 12);
        QCOMPARE(screen.font("price").weight(), QFont::Bold);
        QCOMPARE(screen.color("crown"), screen.scene.themeColor("yellow"));
        QCOMPARE(screen.color("chevron"), screen.scene.themeColor("tertiary"));
        const QQuickItem &background = screen.item("bannerBackground");
        QCOMPARE(background.property("radius").toDouble(), 10.0);
        QCOMPARE(background.property("borderWidth").toDouble(), 0.5);
        const auto border = [&](const char *name) { return background.property(name).value<QColor>(); };
        TALVENOR_COMPARE_COLOR(border("borderStartColor"),
                               withOpacity(screen.scene.themeColor("purple"), 0.3));
        TALVENOR_COMPARE_COLOR(border("borderEndColor"), withOpacity(screen.scene.themeColor("blue"), 0.3));
        // The pill runs from purple to blue.
        const QRectF pill = screen.rect("pricePill");
        const QImage picture = screen.scene.grab();
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {pill.left() + 4, pill.center().y()}),
                               screen.scene.themeColor("purple"), 8);
        TALVENOR_COMPARE_COLOR(RenderedScene::colorAt(picture, {pill.right() - 4, pill.center().y()}),
                               screen.scene.themeColor("blue"), 8);
    }

    void theUsageLineStandsBelow()
    {
        Screen screen(plan("free", 1, 3));
        const QRectF line = screen.rect("usageLine");
        QCOMPARE(line.bottom(), 660.0 - 8);
        QVERIFY(std::abs(line.center().x() - 400) <= 0.5);
        QCOMPARE(screen.rect("usageIcon").left() - line.left(), 16.0);
        QCOMPARE(screen.rect("usage").left() - screen.rect("usageIcon").right(), 8.0);
        QVERIFY(std::abs(line.height() - screen.rect("usage").height() - 16) <= 0.5);
        QVERIFY(std::abs(line.right() - screen.rect("usage").right() - 16) <= 0.5);
        QCOMPARE(screen.text("usage"), QStringLiteral("1/3 recordings this month"));
        QCOMPARE(screen.item("usageIcon").property("name").toString(), QStringLiteral("chart.bar.fill"));
        QCOMPARE(screen.color("usageIcon"), screen.scene.themeColor("secondary"));
        QVERIFY(!screen.isVisible("upgradeButton"));
        // The parts are in the middle of what banner and line leave.
        const double middle = (screen.rect("status").top() + screen.rect("waveformSection").bottom()) / 2;
        QVERIFY(std::abs(middle - (screen.rect("banner").bottom() + line.top()) / 2) <= 1.5);
    }

    void aWarningOffersAFreeAccountTheUpgrade()
    {
        Screen screen(plan("free", 2, 3));
        QCOMPARE(screen.item("usageIcon").property("name").toString(),
                 QStringLiteral("exclamationmark.triangle.fill"));
        QCOMPARE(screen.color("usageIcon"), screen.scene.themeColor("orange"));
        QVERIFY(screen.isVisible("upgradeButton"));
        QCOMPARE(screen.text("upgradeButton"), QStringLiteral("Upgrade"));
        QCOMPARE(screen.font("upgradeButton").weight(), QFont::Bold);
        QCOMPARE(screen.color("upgradeButton"), screen.scene.themeColor("purple"));
        QCOMPARE(screen.rect("upgradeButton").left() - screen.rect("usage").right(), 8.0);
        screen.fixture.signIn(plan("basic", 25, 25));
        QVERIFY(!screen.isVisible("upgradeButton"));
        QCOMPARE(screen.color("usageIcon"), screen.scene.themeColor("orange"));
        QCOMPARE(screen.text("usage"), QStringLiteral("25/25 recordings this month"));
    }

    void withoutAUserOnlyTheButtonIsThere()
    {
        Screen screen(plan("free", 1, 3));
        screen.fixture.signOut();
        QVERIFY(!screen.isVisible("banner"));
        QVERIFY(!screen.isVisible("usageLine"));
        QVERIFY(screen.isVisible("recordButton"));
    }

    void thePlansAreAskedForByBannerAndButton()
    {
        Screen screen(plan("free", 3, 3));
        QSignalSpy requests(&screen.scene.root(), SIGNAL(plansRequested()));
        QVERIFY(!screen.scene.root().property("showSubscription").toBool());
        screen.scene.click(screen.item("banner"));
        QCOMPARE(requests.size(), 1);
        QVERIFY(screen.scene.root().property("showSubscription").toBool());
        screen.scene.click(screen.item("upgradeButton"));
        QCOMPARE(requests.size(), 2);
        QVERIFY(!screen.state.isRecording());
    }

    void theSheetWithThePlansOpensOverTheWindowUntilItIsClosed()
    {
        RecorderFixture fixture;
        AppSettings::shared().setHasCompletedSetup(true);
        fixture.signIn(plan("free", 1, 3));
        ContentState content;
        const RenderedScene scene("ContentView {}", {1100, 720},
                                  {{QStringLiteral("content"), QVariant::fromValue(&content)}});
        for (int times = 0; times < 2; ++times) {
            scene.click(scene.item(QStringLiteral("banner")));
            QQuickItem &screen = *scene.item(QStringLiteral("banner")).parentItem();
            QVERIFY(screen.property("showSubscription").toBool());
            QVERIFY(waitUntil([&] {
                return scene.accessible(QAccessible::Dialog, QStringLiteral("Choose Plan")) != nullptr;
            }));
            scene.press(Qt::Key_Escape);
            QVERIFY(waitUntil([&] { return !screen.property("showSubscription").toBool(); }));
            QVERIFY(waitUntil([&] {
                return scene.accessible(QAccessible::Dialog, QStringLiteral("Choose Plan")) == nullptr;
            }));
        }
    }

    void processingShowsInEitherLook()
    {
        Screen screen(plan("free", 1, 3));
        screen.setRecording(true);
        screen.setRecording(false);
        screen.startProcessing();
        const QRectF capsule = screen.rect("processingCapsule");
        QCOMPARE(capsule.bottom(), 660.0 - 28);
        QVERIFY(std::abs(capsule.center().x() - 400) <= 0.5);
        QCOMPARE(screen.rect("usageLine").bottom(), capsule.top() - 8);
        QCOMPARE(screen.text("processingStatus"), screen.state.processingStatus());
        QVERIFY(!screen.text("processingStatus").isEmpty());
        QVERIFY(std::abs(capsule.height() - screen.rect("processingStatus").height() - 20) <= 0.5);
        QVERIFY(std::abs(capsule.right() - screen.rect("processingStatus").right() - 20) <= 0.5);
        QVERIFY(screen.isVisible("hint"));
        screen.setRecording(true);
        QVERIFY(screen.isVisible("processingCapsule"));
        screen.fixture.speech.fail(0, 0, QStringLiteral("no"));
        QVERIFY(waitUntil([&] { return !screen.state.isProcessing(); }));
        // It keeps its words on its way out.
        QVERIFY(!screen.text("processingStatus").isEmpty());
        QVERIFY(waitUntil([&] { return !screen.isVisible("processingCapsule"); }));
        QCOMPARE(screen.rect("usageLine").bottom(), 660.0 - 8);
    }

    void nothingOverlapsInTheSmallestWindow()
    {
        Screen screen(plan("free", 3, 3), {659, 588});
        screen.setRecording(true);
        screen.startProcessing();
        QVERIFY(screen.rect("banner").bottom() <= screen.rect("caption").top());
        QVERIFY(screen.rect("timer").bottom() <= screen.rect("recordButton").top());
        QVERIFY(screen.rect("recordButton").bottom() <= screen.rect("waveform").top());
        QVERIFY(screen.rect("sourceIndicator").bottom() <= screen.rect("usageLine").top());
        QVERIFY(screen.rect("usageLine").bottom() <= screen.rect("processingCapsule").top());
        QVERIFY(screen.rect("bannerSubline").right() <= screen.rect("pricePill").left());
    }

    void aClickTogglesAndADoubleClickDoesSoTwice()
    {
        Screen screen;
        screen.scene.click(screen.item("recordButton"));
        QVERIFY(waitUntil([&] { return screen.state.isRecording(); }));
        screen.scene.click(screen.item("recordButton"));
        QVERIFY(!screen.state.isRecording());
        const qsizetype before = screen.fixture.viewModel->recordings().size();
        const QPoint center = screen.rect("recordButton").center().toPoint();
        QTest::mouseClick(&screen.scene.window(), Qt::LeftButton, Qt::NoModifier, center);
        QTest::mouseDClick(&screen.scene.window(), Qt::LeftButton, Qt::NoModifier, center);
        // Nothing holds back the second one while the first is starting.
        QVERIFY(screen.fixture.viewModel->recordings().size() >= before + 2);
    }

    void onlyTheCircleTakesClicks()
    {
        Screen screen;
        const QRectF button = screen.rect("recordButton");
        screen.scene.click(button.topLeft() + QPointF(12, 12));
        QCOMPARE(screen.fixture.viewModel->recordings().size(), 0);
        screen.scene.click(QPointF(button.center().x(), button.top() + 3));
        QCOMPARE(screen.fixture.viewModel->recordings().size(), 1);
    }

    void theKeyboardOperatesTheButton_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("space") << Qt::Key_Space;
        QTest::newRow("return") << Qt::Key_Return;
        QTest::newRow("enter") << Qt::Key_Enter;
    }

    void theKeyboardOperatesTheButton()
    {
        QFETCH(const Qt::Key, key);
        Screen screen;
        screen.scene.press(Qt::Key_Tab);
        QVERIFY(screen.item("recordButton").hasActiveFocus());
        const QRectF button = screen.rect("recordButton");
        // The ring of the focus lies around the disc.
        const QPointF place(button.center().x() + 75.2, button.center().y() + 0.2);
        TALVENOR_COMPARE_COLOR(screen.scene.colorAt(place), screen.scene.themeColor("focusRing"), 40);
        screen.scene.press(key);
        QVERIFY(waitUntil([&] { return screen.state.isRecording(); }));
        screen.scene.press(key);
        QVERIFY(!screen.state.isRecording());
    }

    void tabsFollowTheReadingOrder()
    {
        Screen screen(plan("free", 3, 3));
        for (const char *const name : {"banner", "recordButton", "upgradeButton"}) {
            screen.scene.press(Qt::Key_Tab);
            QVERIFY2(screen.item(name).hasActiveFocus(), name);
        }
    }

    void thePointerLetsTheDiscGrow()
    {
        Screen screen;
        QCOMPARE(screen.item("disc").scale(), 1.0);
        screen.scene.hover(screen.rect("recordButton").center());
        QVERIFY(waitUntil([&] { return screen.item("disc").scale() == 1.045; }));
        QVERIFY(screen.item("recordButton").property("isHovering").toBool());
        screen.scene.hover({5, 600});
        QVERIFY(waitUntil([&] { return screen.item("disc").scale() == 1.0; }));
    }

    void isPulsingMirrorsTheSession()
    {
        Screen screen;
        QVERIFY(!screen.item("recordButton").property("isPulsing").toBool());
        screen.setRecording(true);
        QVERIFY(screen.item("recordButton").property("isPulsing").toBool());
    }

    void theScreenIsSpokenInOrdinaryLetters()
    {
        Screen screen(plan("free", 3, 3));
        const auto has = [&](QAccessible::Role role, const char *name) {
            return screen.scene.accessible(role, QString::fromUtf8(name)) != nullptr;
        };
        QVERIFY(has(QAccessible::StaticText, "Ready to Record"));
        QVERIFY(has(QAccessible::StaticText, "Click to Start"));
        QVERIFY(has(QAccessible::StaticText, "3/3 recordings this month"));
        QVERIFY(has(QAccessible::Button, "Record"));
        QVERIFY(has(QAccessible::Button, "Upgrade to Premium"));
        QVERIFY(has(QAccessible::Button, "Upgrade"));
        QVERIFY(!has(QAccessible::ProgressBar, "Input Level"));
        screen.fixture.signIn(plan("premium", 3, 3));
        screen.setRecording(true);
        QVERIFY(has(QAccessible::StaticText, "Recording in Progress"));
        QVERIFY(has(QAccessible::StaticText, "Microphone only (System audio unavailable)"));
        QVERIFY(has(QAccessible::Button, "Stop"));
        QVERIFY(has(QAccessible::ProgressBar, "Input Level"));
        QVERIFY(screen.scene.accessible(QAccessible::StaticText, screen.state.formattedDuration()));
    }

    void assistiveTechnologyPressesTheButton()
    {
        Screen screen;
        QAccessibleInterface *const button =
            screen.scene.accessible(QAccessible::Button, QStringLiteral("Record"));
        QVERIFY(button && button->actionInterface());
        button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QVERIFY(waitUntil([&] { return screen.state.isRecording(); }));
    }

    void theLanguageChangesLive()
    {
        Screen screen(plan("free", 3, 3));
        screen.scene.setLanguage(AppLanguage::german);
        QCOMPARE(screen.text("caption"), QStringLiteral("Bereit zur Aufnahme"));
        QCOMPARE(screen.text("hint"), QStringLiteral("Klicke zum Starten"));
        QCOMPARE(screen.text("bannerHeadline"), QStringLiteral("Upgrade auf Premium"));
        QCOMPARE(screen.text("bannerSubline"),
                 QStringLiteral("Unbegrenzte Aufnahmen, KI-Zusammenfassungen & mehr"));
        QCOMPARE(screen.text("price"), QStringLiteral("Ab 8,99€/Mo"));
        QCOMPARE(screen.text("usage"), QStringLiteral("3/3 Aufnahmen diesen Monat"));
        QCOMPARE(screen.text("upgradeButton"), QStringLiteral("Upgrade"));
        QVERIFY(screen.scene.accessible(QAccessible::Button, QStringLiteral("Aufnehmen")));
        screen.fixture.signIn(plan("premium", 0, 3));
        screen.setRecording(true);
        QCOMPARE(screen.text("caption"), QStringLiteral("Aufnahme läuft"));
        QCOMPARE(screen.text("source"), QStringLiteral("Nur Mikrofon (System-Audio nicht verfuegbar)"));
        QVERIFY(screen.scene.accessible(QAccessible::Button, QStringLiteral("Stoppen")));
        QVERIFY(screen.scene.accessible(QAccessible::ProgressBar, QStringLiteral("Eingangspegel")));
        screen.scene.setLanguage(AppLanguage::english);
        QCOMPARE(screen.text("caption"), QStringLiteral("Recording in Progress"));
    }

    void theLevelsOfTheSessionReachBarsAndRing()
    {
        Screen screen;
        screen.setRecording(true);
        PcmBuffer buffer({48000, 1}, 480);
        std::fill_n(buffer.floatChannelData()[0], 480, 0.5F);
        screen.fixture.tap(buffer);
        const auto &waveform = dynamic_cast<const AudioWaveform &>(screen.item("waveform"));
        QVERIFY(waitUntil([&] { return waveform.value() > 0.5; }));
        QVERIFY(
            waitUntil([&] { return screen.item("recordingRings").property("audioLevel").toDouble() > 0.5; }));
        QCOMPARE(waveform.levels(), screen.state.audioLevels());
    }

    void nothingMovesOrIsPaintedInAHiddenWindow()
    {
        Screen screen;
        screen.setRecording(true);
        const auto &motion = dynamic_cast<const RecordMotion &>(screen.item("motion"));
        QVERIFY(motion.isMoving());
        screen.scene.window().hide();
        QVERIFY(!motion.isMoving());
        const QSignalSpy frames(&screen.scene.window(), &QQuickWindow::afterRendering);
        const QSignalSpy moments(&motion, &RecordMotion::momentChanged);
        // The session goes on for a tick of its timer.
        const QString duration = screen.state.formattedDuration();
        QVERIFY(waitUntil([&] { return screen.state.formattedDuration() != duration; }));
        QCOMPARE(frames.size(), 0);
        QCOMPARE(moments.size(), 0);
        const auto &waveform = dynamic_cast<const AudioWaveform &>(screen.item("waveform"));
        QVERIFY(!waveform.isMoving());
    }
};

TALVENOR_SCREEN_TEST_MAIN(MainRecordViewTest)
#include "MainRecordViewTest.moc"
