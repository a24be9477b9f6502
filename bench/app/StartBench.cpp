// How long a start takes, from the call of the program to its first picture on the screen, beside a program
// that shows nothing but an empty Qt Quick window. Both are started in turn on the same screen, which is
// black where nothing has been painted yet.
//
//     StartBench PROGRAM [STARTS]

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int kLimitMs = 30'000;

bool isBlack(QPoint point)
{
    const QImage pixel =
        QGuiApplication::primaryScreen()->grabWindow(0, point.x(), point.y(), 1, 1).toImage();
    return pixel.isNull() || qGray(pixel.pixel(0, 0)) == 0;
}

/// Milliseconds from the start of `program` until the middle of the screen is painted; below zero if that
/// does not come to pass.
double millisecondsToFirstPicture(const QString &program)
{
    const QPoint middle = QGuiApplication::primaryScreen()->geometry().center();
    while (!isBlack(middle)) // the window of the last start is still there
        QThread::msleep(10);
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    QElapsedTimer clock;
    clock.start();
    process.start(program, QStringList());
    double result = -1;
    while (clock.elapsed() < kLimitMs) {
        if (!isBlack(middle)) {
            result = double(clock.nsecsElapsed()) / 1e6;
            break;
        }
        QThread::msleep(1);
    }
    process.terminate();
    process.waitForFinished();
    return result;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() < 2) {
        std::fprintf(stderr, "usage: StartBench PROGRAM [STARTS]\n");
        return 2;
    }
    const QString &program = arguments.at(1);
    const QString empty = QCoreApplication::applicationDirPath() + QStringLiteral("/EmptyWindow");
    const int starts = arguments.size() > 2 ? std::max(1, arguments.at(2).toInt()) : 10;
    // The first start of each reads its libraries from the disk and is not counted.
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int i = 0; i <= starts; ++i) {
        const double own = millisecondsToFirstPicture(program);
        const double other = millisecondsToFirstPicture(empty);
        if (own < 0 || other < 0) {
            std::fprintf(stderr, "nothing was painted\n");
            return 1;
        }
        if (i > 0) {
            ours.push_back(own);
            theirs.push_back(other);
        }
    }
    std::printf("first picture after    median      longest\n");
    for (const auto &[name, values] : {std::pair("this program", &ours), std::pair("empty window", &theirs)})
        std::printf("%-18s %8.0f ms %9.0f ms\n", name, median(*values),
                    *std::max_element(values->begin(), values->end()));
    std::printf("%.2f times the empty window\n", median(ours) / median(theirs));
    return 0;
}
