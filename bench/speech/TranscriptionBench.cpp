// How long a spoken meeting takes from the audio file to the lines of its transcript, beside PocketSphinx's
// own program on the same sound with the same model, in the same run.
//
//     tests/support/virtual-desktop -- build/release/bench/TranscriptionBench [ROUNDS]
//
// Processor time is the figure to compare on a machine that does other things; both sides run with the same
// low priority and take turns.

#include "platform/Platform.h"
#include "platform/linux/speech/LinuxSpeech.h"
#include "platform/linux/speech/SpeechModels.h"
#include "settings/AppSettings.h"
#include "speech/TranscriptionService.h"
#include "speech_support/SpokenAudio.h"
#include "speech_support/WordErrors.h"
#include "support/Await.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>

#include <sys/resource.h>

using namespace talvenor;

namespace {

struct Measurement
{
    double wallSeconds = 0;
    double processorSeconds = 0; ///< of this process and of the programs that it has run
    double peakMegabytes = 0;    ///< of the largest program so far
    QStringList words;
};

double processorSeconds()
{
    double sum = 0;
    for (const __rusage_who who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        for (const timeval &part : {usage.ru_utime, usage.ru_stime})
            sum += double(part.tv_sec) + double(part.tv_usec) / 1e6;
    }
    return sum;
}

template<typename Work>
Measurement measure(Work work)
{
    Measurement measurement;
    const double before = processorSeconds();
    QElapsedTimer timer;
    timer.start();
    measurement.words = work();
    measurement.wallSeconds = double(timer.elapsed()) / 1000;
    measurement.processorSeconds = processorSeconds() - before;
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    measurement.peakMegabytes = double(usage.ru_maxrss) / 1024;
    return measurement;
}

QStringList transcribe(const QString &audio)
{
    TranscriptionService service;
    QStringList words;
    for (const TranscriptSegment &line :
         test::await(service.transcribe(audio, TranscriptionLanguage::english)))
        words += line.text.split(u' ');
    return words;
}

QStringList runPeer(const QString &wave, const PocketSphinxModel &model)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QStringLiteral("nice"),
                  {QStringLiteral("-n"), QStringLiteral("5"), QStringLiteral("pocketsphinx_continuous"),
                   QStringLiteral("-infile"), wave, QStringLiteral("-hmm"), model.acousticModel,
                   QStringLiteral("-lm"), model.languageModel, QStringLiteral("-dict"), model.dictionary,
                   QStringLiteral("-logfn"), QProcess::nullDevice()});
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        qFatal("pocketsphinx_continuous cannot be run; it is in Debian's package pocketsphinx");
    return QString::fromUtf8(process.readAllStandardOutput()).simplified().split(u' ');
}

void report(const char *name, const Measurement &measurement, const QStringList &reference,
            double audioSeconds)
{
    const int errors = test::alignWords(reference, measurement.words).errors;
    std::printf("%-26s wall %6.2f s, processor %6.2f s (%.3f of real time), %.1f%% of words wrong, "
                "largest program so far %.0f MB\n",
                name, measurement.wallSeconds, measurement.processorSeconds,
                measurement.processorSeconds / audioSeconds, 100.0 * errors / double(reference.size()),
                measurement.peakMegabytes);
    std::fflush(stdout);
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const QCoreApplication application(argumentCount, arguments);
    const int rounds = argumentCount > 1 ? std::max(1, std::atoi(arguments[1])) : 2;
    installLinuxSpeech(Platform::shared());
    const auto search = findPocketSphinxModel(speechModelFolders());
    if (!search.model)
        qFatal("there is no model");

    const QTemporaryDir folder;
    const QString audio = folder.filePath(QStringLiteral("meeting.m4a"));
    const QString wave = folder.filePath(QStringLiteral("meeting.wav"));
    const test::SpokenMeeting meeting = test::speakMeeting();
    test::writeM4a(audio, meeting.samples);
    test::writeWave(wave, meeting.samples);
    const double audioSeconds = double(meeting.samples.size()) / test::kSampleRate;
    std::printf("a meeting of %.0f s\n", audioSeconds);

    double ours = 0;
    double theirs = 0;
    for (int round = 0; round < rounds; ++round) {
        const Measurement own = measure([&] { return transcribe(audio); });
        report("Talvenor, .m4a to lines", own, meeting.words(), audioSeconds);
        const Measurement peer = measure([&] { return runPeer(wave, *search.model); });
        report("pocketsphinx_continuous", peer, meeting.words(), audioSeconds);
        ours += own.processorSeconds;
        theirs += peer.processorSeconds;
    }
    std::printf("processor time: %.3f times the peer's (aim: 1.05)\n", ours / theirs);
    Platform::shared().createSpeechRecognizer = nullptr;
    return 0;
}
