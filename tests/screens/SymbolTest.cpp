#include "screens/paint/Symbol.h"
#include "screens/ScreensModule.h"
#include "screens/paint/SymbolImages.h"
#include "support/Await.h"

#include <QElapsedTimer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickView>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace talvenor;
using test::waitUntil;

namespace {

/// The frames that a window has drawn while something was looked at.
class FrameCount
{
public:
    explicit FrameCount(QQuickWindow &window) : m_frames(&window, &QQuickWindow::frameSwapped) {}
    [[nodiscard]] qsizetype value() const { return m_frames.size(); }

private:
    QSignalSpy m_frames;
};

} // namespace

/// The item that shows symbols, in a real window.
class SymbolTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { initializeScreens(); }

    void theItemShowsItsPictureAndFollowsItsProperties()
    {
        QQuickView view;
        std::unique_ptr<Symbol> symbol = shown(view, "name: 'stop.fill'; size: 24; color: '#ff3b30'");
        QVERIFY(symbol);
        QCOMPARE(symbol->implicitWidth(), SymbolImages::boxForFontSize(24));
        QCOMPARE(symbol->implicitHeight(), symbol->implicitWidth());
        const auto pixel = [&] { return view.grabWindow().pixelColor(QPoint(15, 15)); };
        QCOMPARE(pixel(), QColor(255, 59, 48));
        symbol->setColor(QColor(0, 128, 0));
        QCOMPARE(pixel(), QColor(0, 128, 0));
        symbol->setGradientStart(Qt::blue);
        QCOMPARE(pixel(), QColor(0, 128, 0)); // one end is no gradient
        symbol->setGradientEnd(Qt::blue);
        QCOMPARE(pixel(), QColor(Qt::blue));
        symbol->resetGradientEnd();
        QCOMPARE(pixel(), QColor(0, 128, 0));
        symbol->setName(QStringLiteral("circle"));
        QCOMPARE(pixel(), QColor(Qt::white));
        symbol->setName(QString());
        QCOMPARE(pixel(), QColor(Qt::white));
    }

    void eachChangeIsToldOnceAndNoChangeNever()
    {
        Symbol symbol;
        QSignalSpy sizes(&symbol, &Symbol::fontSizeChanged);
        QSignalSpy weights(&symbol, &Symbol::weightChanged);
        symbol.setFontSize(30);
        symbol.setFontSize(30);
        symbol.setWeight(Symbol::Bold);
        symbol.setWeight(Symbol::Bold);
        QCOMPARE(sizes.size(), 1);
        QCOMPARE(weights.size(), 1);
    }

    void aLargerItemHasItsPictureInTheMiddle()
    {
        QQuickView view;
        std::unique_ptr<Symbol> symbol = shown(view, "name: 'stop.fill'; size: 16; width: 60; height: 40");
        QVERIFY(symbol);
        const QImage picture = view.grabWindow();
        QCOMPARE(picture.pixelColor(30, 20), QColor(Qt::black));
        QCOMPARE(picture.pixelColor(10, 20), QColor(Qt::white));
        QCOMPARE(picture.pixelColor(50, 20), QColor(Qt::white));
        QCOMPARE(picture.pixelColor(30, 6), QColor(Qt::white));
    }

    void aRunningSymbolLightsItsLayersOneAfterAnother()
    {
        QQuickView view;
        std::unique_ptr<Symbol> symbol = shown(view, "name: 'waveform'; size: 96; isRunning: true");
        QVERIFY(symbol);
        QVERIFY(symbol->isAnimating());
        FrameCount frames(view);
        QSet<int> lit;
        QVERIFY(waitUntil([&] {
            const QImage image = view.grabWindow();
            int darkest = 0;
            for (int x = 0; x < 120; ++x)
                if (image.pixelColor(x, 60).red() < image.pixelColor(darkest, 60).red())
                    darkest = x;
            lit.insert(darkest / 24);
            return lit.size() == 5;
        }));
        symbol->setIsRunning(false);
        QVERIFY(!symbol->isAnimating());
        QCOMPARE(view.grabWindow().pixelColor(60, 60), QColor(Qt::black));
    }

    void aRunningSymbolAsksForFewFrames()
    {
        QQuickView view;
        std::unique_ptr<Symbol> symbol = shown(view, "name: 'waveform'; size: 16; isRunning: true");
        QVERIFY(symbol);
        FrameCount frames(view);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(waitUntil([&] { return frames.value() >= 8; }));
        QVERIFY2(frames.value() * 1000.0 / static_cast<double>(clock.elapsed()) <= 15,
                 qPrintable(QString::number(clock.elapsed())));
    }

    void nothingRunsThatCannotBeSeen()
    {
        QQuickView view;
        std::unique_ptr<Symbol> symbol = shown(view, "name: 'waveform'; size: 16; isRunning: true");
        QVERIFY(symbol);
        QVERIFY(symbol->isAnimating());
        symbol->setVisible(false);
        QVERIFY(!symbol->isAnimating());
        symbol->setVisible(true);
        QVERIFY(symbol->isAnimating());
        view.hide();
        QVERIFY(!symbol->isAnimating());
        view.show();
        QVERIFY(waitUntil([&] { return symbol->isAnimating(); }));
        view.showMinimized();
        QVERIFY(waitUntil([&] { return !symbol->isAnimating(); }));
        view.showNormal();
        QVERIFY(waitUntil([&] { return symbol->isAnimating(); }));
        symbol->setParentItem(nullptr);
        QVERIFY(!symbol->isAnimating());
        symbol->setParentItem(view.contentItem());
        QVERIFY(symbol->isAnimating());
        symbol->setName(QStringLiteral("gearshape"));
        QVERIFY(!symbol->isAnimating());
    }

    void aRunningSymbolThatIsScrolledAwayAsksForNoFrames()
    {
        QQuickView view;
        std::unique_ptr<Symbol> symbol = shown(view, "name: 'waveform'; size: 16; isRunning: true");
        QVERIFY(symbol);
        symbol->setY(-500);
        FrameCount frames(view);
        QVERIFY(waitUntil([&] { return frames.value() >= 1; }));
        const qsizetype before = frames.value();
        QTimer ticks;
        QSignalSpy elapsed(&ticks, &QTimer::timeout);
        ticks.start(Symbol::cycleDuration);
        QVERIFY(waitUntil([&] { return elapsed.size() >= 1; }));
        QVERIFY(frames.value() - before <= 1);
        symbol->setY(0);
        const qsizetype back = frames.value();
        QVERIFY(waitUntil([&] { return frames.value() >= back + 3; }));
    }

    void aStillSymbolOwnsNoTimer()
    {
        QQuickView view;
        std::unique_ptr<Symbol> still = shown(view, "name: 'waveform'; size: 16");
        QVERIFY(still);
        QVERIFY(!still->isAnimating());
        QCOMPARE(still->findChildren<QTimer *>().size(), 0);
    }

    void theQmlTypeKnowsItsWeightsAndUnsetsItsGradient()
    {
        QQmlEngine engine;
        std::unique_ptr<Symbol> symbol = created(
            engine, "name: 'xmark'; weight: Symbol.Bold; gradientStart: undefined; isDiagonal: false");
        QVERIFY(symbol);
        QCOMPARE(symbol->weight(), Symbol::Bold);
        QVERIFY(!symbol->gradientStart().isValid());
        QVERIFY(!symbol->isDiagonal());
    }

private:
    static std::unique_ptr<Symbol> created(QQmlEngine &engine, const char *properties)
    {
        engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
        QQmlComponent component(&engine);
        component.setData(QByteArray("import QtQuick\nimport Talvenor\nSymbol { ") + properties + " }",
                          QUrl());
        std::unique_ptr<QObject> object(component.create());
        if (!object)
            qWarning("%s", qPrintable(component.errorString()));
        auto *symbol = qobject_cast<Symbol *>(object.get());
        if (symbol)
            static_cast<void>(object.release());
        return std::unique_ptr<Symbol>(symbol);
    }

    /// The item in a white window that is on the screen; null if it could not be made.
    static std::unique_ptr<Symbol> shown(QQuickView &view, const char *properties)
    {
        std::unique_ptr<Symbol> symbol = created(*view.engine(), properties);
        if (!symbol)
            return nullptr;
        view.setColor(Qt::white);
        view.resize(200, 150);
        symbol->setParentItem(view.contentItem());
        view.show();
        return QTest::qWaitForWindowExposed(&view) ? std::move(symbol) : nullptr;
    }
};

QTEST_MAIN(SymbolTest)
#include "SymbolTest.moc"
