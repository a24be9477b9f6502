// Deletes the only recording while it is being transcribed, which must end the process in a told way.

#include "recorderfakes/RecorderFixture.h"
#include "support/Await.h"

#include <QCoreApplication>

#include <sys/resource.h>

using namespace talvenor;

int main(int argc, char *argv[])
{
    const rlimit noCoreFile{0, 0};
    setrlimit(RLIMIT_CORE, &noCoreFile);
    const QCoreApplication application(argc, argv);
    test::RecorderFixture fixture;
    Recording recording;
    recording.audioFileName = QStringLiteral("a.m4a");
    fixture.writeList({recording});
    RecorderViewModel &viewModel = fixture.start();
    startTask(&viewModel, [&viewModel, recording] { return viewModel.transcribeRecording(recording); });
    if (!test::waitUntil([&] { return fixture.speech.started() == 1; }))
        return 2;
    viewModel.deleteRecording(recording);
    fixture.speech.finish(0, {QStringLiteral("Hello")});
    return test::waitUntil([&] { return !viewModel.isProcessing(); }) ? 0 : 3;
}
