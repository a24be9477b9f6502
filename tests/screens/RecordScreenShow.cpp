// Shows the record screen as people will see it, for pictures and for measurements. Not a test.
//
//   RecordScreenShow [--scale 2] pictures FOLDER [WIDTHxHEIGHT ...]
//   RecordScreenShow [--scale 2] cost LOOK SECONDS     LOOK is idle, recording, hidden or empty

#include "RenderedScene.h"

#include "recorderfakes/RecorderFixture.h"
#include "screens/ContentState.h"
#include "settings/AppSettings.h"
#include "support/Await.h"

#include <QCursor>
#include <QFile>
#include <QTextStream>
#include <QTimer>

#include <cmath>

using namespace talvenor;
using test::RecorderFixture;
using test::RenderedScene;
using test::waitUntil;

namespace {

/// The whole window, as the program has it.
const QByteArray windowText = "ContentView {}";
const QByteArray screenText = "MainRecordView {}";

/// A voice for the microphone: syllables, words and pauses.
class Voice : public QObject
{
public:
    explicit Voice(RecorderFixture &fixture) : m_fixture(fixture)
    {
        connect(&m_timer, &QTimer::timeout, this, &Voice::speak);
        m_timer.start(20);
    }

private:
    void speak()
    {
        if (!m_fixture.tap)
            return;
        m_time += 0.02;
        const double words = std::max(0.0, std::sin(m_time * 1.9) + 0.55);
        const double syllables = 0.55 + 0.45 * std::sin(m_time * 17) * std::sin(m_time * 5.3);
        const auto loudness = static_cast<float>(0.0015 * std::pow(10, 2.1 * words * syllables));
        PcmBuffer buffer({48000, 1}, 960);
        for (std::uint32_t i = 0; i < 960; ++i)
            buffer.floatChannelData()[0][i] = loudness * std::sin(static_cast<float>(i) * 0.05F);
        m_fixture.tap(buffer);
    }

    RecorderFixture &m_fixture;
    QTimer m_timer;
    double m_time = 0;
};

void signIn(RecorderFixture &fixture, const char *tier, int count, int limit)
{
    fixture.signIn({{QStringLiteral("subscription_tier"), QString::fromLatin1(tier)},
                    {QStringLiteral("recordings_count"), count},
                    {QStringLiteral("recordings_limit"), limit},
                    {QStringLiteral("can_record"), true}});
}

/// What the sidebar shows.
void writeHistory(RecorderFixture &fixture)
{
    QList<Recording> history;
    const auto add = [&history](const char *title, const char *date, double seconds) {
        Recording recording;
        recording.title = QString::fromUtf8(title);
        recording.date = QDateTime::fromString(QString::fromLatin1(date), Qt::ISODate);
        recording.duration = seconds;
        recording.status = RecordingStatus::completed;
        history.append(recording);
    };
    add("Budget 2027", "2026-11-19T14:00:00Z", 2712);
    add("Interview with Ms Nowak", "2026-11-18T09:30:00Z", 1935);
    add("Weekly planning", "2026-11-16T08:15:00Z", 3605);
    fixture.writeList(history);
}

void hold(const RenderedScene &scene)
{
    scene.item(QStringLiteral("motion")).setProperty("isEnabled", false);
    scene.item(QStringLiteral("motion")).setProperty("moment", 8700);
}

void settle(int milliseconds)
{
    QTimer timer;
    timer.setSingleShot(true);
    timer.start(milliseconds);
    waitUntil([&] { return !timer.isActive(); });
}

/// Out of the way of what reacts to it.
void movePointerAway(const RenderedScene &scene)
{
    QCursor::setPos(scene.window().mapToGlobal(QPoint(2, scene.window().height() / 2)));
}

/// Processor time of this process so far, in seconds.
double processorTime()
{
    QFile file(QStringLiteral("/proc/self/stat"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no /proc/self/stat");
    const QList<QByteArray> fields = file.readAll().split(' ');
    return (fields.at(13).toDouble() + fields.at(14).toDouble()) / 100;
}

void makePictures(const QString &folder, const QList<QSize> &sizes)
{
    for (const QSize size : sizes) {
        for (const bool isDark : {false, true}) {
            for (const bool isGerman : {false, true}) {
                RecorderFixture fixture;
                AppSettings::shared().setHasCompletedSetup(true);
                writeHistory(fixture);
                signIn(fixture, "free", 1, 3);
                ContentState content;
                RecordState &record = *content.record();
                RecorderViewModel &model = content.viewModel();
                RenderedScene scene(windowText, size,
                                    {{QStringLiteral("content"), QVariant::fromValue(&content)}});
                scene.setScheme(isDark ? ColorScheme::dark : ColorScheme::light);
                scene.setLanguage(isGerman ? AppLanguage::german : AppLanguage::english);
                const Voice voice(fixture);
                const auto save = [&](const char *look) {
                    hold(scene);
                    const QString name = QStringLiteral("%1/%2x%3-%4-%5-%6@%7.png")
                                             .arg(folder)
                                             .arg(size.width())
                                             .arg(size.height())
                                             .arg(QString::fromLatin1(look),
                                                  isDark ? QStringLiteral("dark") : QStringLiteral("light"),
                                                  isGerman ? QStringLiteral("de") : QStringLiteral("en"))
                                             .arg(scene.window().effectiveDevicePixelRatio());
                    if (!scene.grab().save(name))
                        qFatal("cannot write %s", qPrintable(name));
                };
                movePointerAway(scene);
                settle(600);
                save("idle");
                signIn(fixture, "free", 3, 3);
                settle(50);
                save("limit");
                signIn(fixture, "free", 1, 3);
                record.toggleRecording();
                settle(300);
                model.setSelectedRecording(std::nullopt); // else the new entry's own screen is seen
                settle(3500);
                save("recording");
                // The recogniser never answers.
                startTask(&model,
                          [&model] { return model.transcribeRecording(model.recordings().constFirst()); });
                settle(500);
                save("processing");
                record.toggleRecording();
                model.setSelectedRecording(std::nullopt);
                settle(900);
                save("processing-ready");
            }
        }
    }
}

void measure(const QString &look, int seconds)
{
    RecorderFixture fixture;
    signIn(fixture, "free", 1, 3);
    RecordState record(fixture.start());
    const RenderedScene scene(look == QLatin1String("empty") ? QByteArray("Item {}") : screenText,
                              {1100, 720},
                              look == QLatin1String("empty")
                                  ? QVariantMap()
                                  : QVariantMap{{QStringLiteral("record"), QVariant::fromValue(&record)}});
    const Voice voice(fixture);
    if (look == QLatin1String("recording") || look == QLatin1String("hidden-recording"))
        record.toggleRecording();
    movePointerAway(scene);
    settle(4000); // until the history of levels is full
    if (look.startsWith(QLatin1String("hidden")))
        scene.window().hide();
    int frames = 0;
    QObject::connect(&scene.window(), &QQuickWindow::afterRendering, &scene.window(), [&] { ++frames; });
    const double before = processorTime();
    settle(seconds * 1000);
    const double used = processorTime() - before;
    QTextStream(stdout) << look << ": " << used / seconds * 100 << " % of one processor, "
                        << static_cast<double>(frames) / seconds << " frames a second\n";
    if (record.isRecording())
        record.toggleRecording();
}

int show(int argc, char **argv)
{
    const QStringList arguments = [argc, argv] {
        QStringList list;
        for (int i = 1; i < argc; ++i)
            list.append(QString::fromLocal8Bit(argv[i]));
        return list;
    }();
    if (arguments.size() >= 2 && arguments.first() == QLatin1String("pictures")) {
        QList<QSize> sizes;
        for (const QString &size : arguments.mid(2))
            sizes.append({size.section(u'x', 0, 0).toInt(), size.section(u'x', 1, 1).toInt()});
        makePictures(arguments.at(1), sizes.isEmpty() ? QList<QSize>{{1100, 720}} : sizes);
        return 0;
    }
    if (arguments.size() == 3 && arguments.first() == QLatin1String("cost")) {
        measure(arguments.at(1), arguments.at(2).toInt());
        return 0;
    }
    QTextStream(stderr) << "RecordScreenShow pictures FOLDER [WIDTHxHEIGHT ...] | cost LOOK SECONDS\n";
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    return test::runScreenTest(argc, argv, show);
}
