// What the sidebar costs in a frame with 10,000 recordings: scrolled, flicked, paged through and searched
// letter by letter, beside the frame of an empty window in the same run. A frame at 60 Hz has 16.7 ms.
//
// Each figure is one turn of the main thread: the input, what follows from it, and the frame drawn and handed
// over, in processor time of that thread, which what else the machine does leaves alone. Run it in
// tests/support/virtual-desktop with --display, or on a real screen; "--scale 2" for a dense one.

#include "RenderedScene.h"

#include "recorderfakes/RecorderFixture.h"
#include "screens/RecordState.h"
#include "screens/RecordingListModel.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>

using namespace talvenor;
using test::RenderedScene;

namespace {

constexpr int recordingCount = 10'000;
constexpr QSize windowSize(300, 720);

double workOfThisThread()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

/// One turn: the input, the events that it causes, and the frame that shows them; in milliseconds of work.
double frame(QQuickWindow &window, const std::function<void()> &input)
{
    bool isShown = false;
    bool isLate = false;
    const auto shown = QObject::connect(&window, &QQuickWindow::frameSwapped, [&isShown] { isShown = true; });
    QTimer limit;
    QObject::connect(&limit, &QTimer::timeout, [&isLate] { isLate = true; });
    limit.start(2000);
    const double before = workOfThisThread();
    input();
    while (!isShown && !isLate)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const double work = workOfThisThread() - before;
    QObject::disconnect(shown);
    if (!isShown)
        qFatal("no frame was shown");
    return work;
}

void report(const char *what, std::vector<double> frames)
{
    std::sort(frames.begin(), frames.end());
    const std::size_t last = frames.size() - 1;
    const auto late = std::count_if(frames.begin(), frames.end(), [](double work) { return work > 16; });
    std::printf("  %-34s %5zu %8.2f %8.2f %8.2f %6td\n", what, frames.size(), frames[frames.size() / 2],
                frames[last * 99 / 100], frames[last], late);
}

/// The first frames of everything fill caches of glyphs and drawings.
void warmUp(QQuickWindow &window)
{
    for (int i = 0; i < 20; ++i)
        frame(window, [&window] { window.update(); });
}

QList<Recording> manyRecordings()
{
    QRandomGenerator random(7);
    const QStringList words{
        QStringLiteral("Meeting"),  QStringLiteral("budget"),     QStringLiteral("with"),
        QStringLiteral("Susan"),    QStringLiteral("Jahresplan"), QStringLiteral("Überblick"),
        QStringLiteral("of"),       QStringLiteral("Straße"),     QStringLiteral("quarter"),
        QStringLiteral("– review"), QStringLiteral("会議"),       QStringLiteral("2027")};
    const QDateTime newest = QDateTime::fromString(QStringLiteral("2026-03-01T10:00:00Z"), Qt::ISODate);
    TranscriptSegment segment;
    segment.text = QStringLiteral("Good morning.");
    QList<Recording> list;
    for (int i = 0; i < recordingCount; ++i) {
        Recording recording;
        QStringList title;
        for (int word = random.bounded(1, 16); word > 0; --word)
            title.append(words.at(random.bounded(words.size())));
        recording.title = title.join(u' ');
        recording.date = newest.addSecs(-5000LL * i);
        recording.duration = random.bounded(8000);
        recording.audioFileName = QStringLiteral("sound.m4a");
        recording.status = i % 29 == 0 ? RecordingStatus::failed : RecordingStatus::completed;
        if (i % 2 == 0)
            recording.transcriptSegments.append(segment);
        if (i % 4 == 0)
            recording.summary = QStringLiteral("Short.");
        list.append(recording);
    }
    return list;
}

void measureEmptyWindow()
{
    const RenderedScene scene(
        "Rectangle { color: 'transparent'; Rectangle { objectName: 'spot'; width: 8; height: 8 } }",
        windowSize);
    warmUp(scene.window());
    QQuickItem &spot = scene.item(QStringLiteral("spot"));
    std::vector<double> frames;
    for (int i = 0; i < 300; ++i)
        frames.push_back(frame(scene.window(), [&spot, i] { spot.setX(1 + i % 200); }));
    report("an empty window, a spot moving", frames);
}

void measureScrolling(const RenderedScene &scene, QQuickItem &list)
{
    std::vector<double> frames;
    const auto scrollBy = [&list](double step) {
        list.setProperty("contentY", list.property("contentY").toDouble() + step);
    };
    for (int i = 0; i < 600; ++i)
        frames.push_back(frame(scene.window(), [&] { scrollBy(40); }));
    report("scrolled by 40 px a frame", frames);

    frames.clear();
    for (int i = 0; i < 300; ++i)
        frames.push_back(frame(scene.window(), [&] { scrollBy(600); }));
    report("scrolled by a page a frame", frames);

    frames.clear();
    QRandomGenerator random(3);
    const double height = list.property("contentHeight").toDouble() - list.height();
    for (int i = 0; i < 300; ++i)
        frames.push_back(
            frame(scene.window(), [&] { list.setProperty("contentY", std::floor(random.bounded(height))); }));
    report("bar dragged to any place a frame", frames);

    frames.clear();
    list.setProperty("contentY", 0);
    QMetaObject::invokeMethod(&list, "flick", Q_ARG(double, 0.0), Q_ARG(double, -9000.0));
    while (list.property("moving").toBool())
        frames.push_back(frame(scene.window(), [&scene] { scene.window().update(); }));
    report("flicked, until it rests", frames);

    frames.clear();
    list.setProperty("contentY", 0);
    const QPointF middle = RenderedScene::rect(list).center();
    for (int i = 0; i < 120; ++i) {
        frames.push_back(frame(scene.window(), [&] {
            QWheelEvent turn(middle, scene.window().mapToGlobal(middle), {}, {0, -120}, Qt::NoButton,
                             Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(&scene.window(), &turn);
            scene.window().update();
        }));
    }
    report("wheel turned one notch a frame", frames);

    frames.clear();
    list.forceActiveFocus(Qt::TabFocusReason);
    for (int i = 0; i < 300; ++i)
        frames.push_back(frame(scene.window(), [&] { scene.press(Qt::Key_PageDown); }));
    report("Page Down pressed each frame", frames);
}

void measureTyping(const RenderedScene &scene, const RecordingListModel &model)
{
    scene.item(QStringLiteral("searchInput")).forceActiveFocus(Qt::TabFocusReason);
    std::vector<double> first;
    std::vector<double> letters;
    std::vector<double> deletions;
    const QStringList texts{QStringLiteral("budget"), QStringLiteral("STRASS"), QStringLiteral("e revi"),
                            QStringLiteral("xqzjkw"), QStringLiteral("meetin")};
    for (int round = 0; round < 20; ++round) {
        const QString &text = texts.at(round % texts.size());
        for (const QChar letter : text) {
            const double one = frame(scene.window(), [&] { scene.type(letter); });
            (first.empty() ? first : letters).push_back(one);
        }
        if (round < texts.size())
            std::printf("    (\"%s\" lists %d)\n", qPrintable(text), model.rowCount());
        for (qsizetype i = 0; i < text.size(); ++i)
            deletions.push_back(frame(scene.window(), [&] { scene.press(Qt::Key_Backspace); }));
    }
    report("the very first letter", first);
    report("each further letter", letters);
    report("each deletion of a letter", deletions);
}

int measure(int, char **)
{
    std::printf("%d recordings, window of %d x %d; milliseconds of work for a frame\n", recordingCount,
                windowSize.width(), windowSize.height());
    std::printf("  %-34s %5s %8s %8s %8s %6s\n", "", "n", "median", "99th", "max", "> 16");
    measureEmptyWindow();

    test::RecorderFixture fixture;
    fixture.writeList(manyRecordings());
    RecorderViewModel &viewModel = fixture.start();
    RecordState record(viewModel);
    RecordingListModel model(viewModel);
    const RenderedScene scene("SidebarView { anchors.fill: parent }", windowSize,
                              {{QStringLiteral("record"), QVariant::fromValue(&record)},
                               {QStringLiteral("recordings"), QVariant::fromValue(&model)}});
    std::vector<double> opening{frame(scene.window(), [&scene] { scene.window().update(); })};
    report("the first frame after showing", opening);
    warmUp(scene.window());
    measureScrolling(scene, scene.item(QStringLiteral("recordingList")));
    measureTyping(scene, model);

    std::vector<double> changes;
    for (int i = 0; i < 60; ++i) {
        changes.push_back(frame(scene.window(), [&] {
            viewModel.renameRecording(viewModel.recordings().at(i % 10), QStringLiteral("Renamed %1").arg(i));
        }));
    }
    report("a recording renamed and saved", changes);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    // One thread does it all, so that its time is that of the frame.
    qputenv("QSG_RENDER_LOOP", "basic");
    return test::runScreenTest(argc, argv, measure);
}
