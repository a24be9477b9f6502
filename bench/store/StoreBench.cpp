// What saving and loading cost with a list of 300 meetings of an hour each, beside the limits in the same
// run: the disk for saving, the parser alone for loading, a frame of the screen for the calling thread.

#include "store/RecordingsDecoder.h"
#include "store/RecordingsEncoder.h"
#include "store/StorageService.h"

#include "StoreFixture.h"

#include "settings/AppSettings.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <simdjson.h>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <unistd.h>

using namespace talvenor;

namespace {

constexpr int meetings = 300;
constexpr int rounds = 9;

double milliseconds(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

struct Figures
{
    double median;
    double best;
    double worst;
};

/// Runs two pieces of work in turn, so that what else the machine does meets both.
std::pair<Figures, Figures> compare(const std::function<void()> &ours, const std::function<void()> &peer)
{
    std::vector<double> mine;
    std::vector<double> theirs;
    for (int i = 0; i < rounds; ++i) {
        mine.push_back(milliseconds(ours));
        theirs.push_back(milliseconds(peer));
    }
    const auto figures = [](std::vector<double> &times) {
        std::sort(times.begin(), times.end());
        return Figures{times[times.size() / 2], times.front(), times.back()};
    };
    return {figures(mine), figures(theirs)};
}

void row(const char *what, const Figures &figures)
{
    std::printf("  %-44s %9.2f %9.2f %9.2f\n", what, figures.median, figures.best, figures.worst);
}

/// The limit of every save: the same bytes, written in one go and flushed, over the file of the round before.
void writeAndFlush(const QByteArray &path, const QByteArray &content)
{
    const int file = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0 || write(file, content.constData(), std::size_t(content.size())) != content.size() ||
        fsync(file) != 0 || close(file) != 0)
        qFatal("the bytes cannot be written");
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    // In the current folder, because a temporary folder may be in memory, where flushing costs nothing.
    QTemporaryDir folder(QStringLiteral("store-bench-XXXXXX"));
    if (!folder.isValid())
        qFatal("no folder to work in");
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.path()));
    AppSettings::shared().setStorageDirectory(QFileInfo(folder.path()).absoluteFilePath());
    StorageService &storage = StorageService::shared();
    const QString path = AppSettings::shared().storageURL() + QStringLiteral("/recordings.json");

    QList<Recording> list;
    for (int i = 0; i < meetings; ++i)
        list.append(test::longMeeting(60, i));
    const double first = milliseconds([&] {
        storage.saveRecordings(list);
        storage.waitUntilSaved();
    });
    const QByteArray bytes = test::readFile(path);
    std::printf("%d meetings of an hour: %.1f MB; milliseconds: median, best, worst of %d\n", meetings,
                double(bytes.size()) / 1e6, rounds);

    int change = 0;
    const auto [save, plain] = compare(
        [&] {
            list[150].title = QStringLiteral("Meeting, renamed %1").arg(++change);
            storage.saveRecordings(list);
            storage.waitUntilSaved();
        },
        [&] { writeAndFlush(QFile::encodeName(path + QStringLiteral(".plain")), bytes); });
    std::printf("\nsaving\n");
    row("after one change", save);
    row("writing and flushing the same bytes", plain);
    std::printf("  %-44s %9.2f (aim 1.5)\n  %-44s %9.2f\n", "ratio", save.median / plain.median,
                "the first save, everything encoded", first);

    const auto [load, parse] = compare(
        [&] {
            if (storage.loadRecordings().size() != meetings)
                qFatal("the list was not read");
        },
        [&] {
            simdjson::padded_string content;
            simdjson::dom::parser parser;
            simdjson::dom::array array;
            if (simdjson::padded_string::load(QFile::encodeName(path).toStdString()).get(content) ||
                parser.parse(content).get(array) || array.size() != meetings)
                qFatal("the file was not parsed");
        });
    std::printf("\nloading\n");
    row("into recordings", load);
    row("simdjson's reading and parsing alone", parse);
    std::printf("  %-44s %9.2f (aim 2)\n", "ratio", load.median / parse.median);

    // The calling thread while the writer has work all the time: each change of a copy that the writer
    // shares.
    std::vector<double> stalls;
    for (int i = 0; i < 200; ++i) {
        stalls.push_back(milliseconds([&] {
            Recording &recording = list[i % meetings];
            recording.title += u'x';
            recording.transcriptSegments.append(recording.transcriptSegments.first());
            storage.saveRecordings(list);
        }));
        if (i % 10 == 9)
            storage.waitUntilSaved();
    }
    std::sort(stalls.begin(), stalls.end());
    std::printf("\nthe calling thread, 200 changes with a save each while others are being written\n");
    row("one change and its save", {stalls[stalls.size() / 2], stalls.front(), stalls.back()});

    std::vector<double> writes;
    for (int i = 0; i < 50; ++i)
        writes.push_back(milliseconds([&] { AppSettings::shared().setAutoTranscribe(i % 2 == 0); }));
    std::sort(writes.begin(), writes.end());
    row("one setting written and flushed", {writes[writes.size() / 2], writes.front(), writes.back()});
    std::printf("  %-44s %9.2f\n", "one frame at 60 Hz", 1000.0 / 60);
    return 0;
}
