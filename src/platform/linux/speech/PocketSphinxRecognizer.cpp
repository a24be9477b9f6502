#include "platform/linux/speech/PocketSphinxRecognizer.h"

#include "platform/UnifiedLog.h"
#include "platform/linux/speech/WorkerProtocol.h"

#include <QDir>
#include <QFileInfo>

namespace talvenor {

namespace {

SpeechErrorCode codeOf(const ChildProcess::Ending &ending)
{
    if (!ending.bySignal && ending.number == WorkerProtocol::modelNotLoaded)
        return modelNotLoaded;
    if (!ending.bySignal && ending.number == WorkerProtocol::audioNotReadable)
        return audioNotReadable;
    return engineFailed;
}

void recognize(RecognitionRun &run, const QString &program, const QStringList &arguments)
{
    std::optional<QString> failure;
    bool hasEnded = false;
    const ChildProcess::Ending ending = run.runProgram(program, arguments, [&](const QByteArray &line) {
        if (const auto word = WorkerProtocol::parseWordLine(line)) {
            run.addWord(*word);
        } else if (const auto description = WorkerProtocol::parseErrorLine(line)) {
            failure = description;
        } else if (WorkerProtocol::isEndLine(line)) {
            hasEnded = true;
        }
    });
    if (run.isStopped())
        return;
    if (ending.isSuccess() && hasEnded) {
        run.reportFinal(run.words());
        return;
    }
    qCCritical(platformLog, "The speech worker ended with %s", qUtf8Printable(ending.description()));
    run.reportError(
        {codeOf(ending),
         failure.value_or(
             QStringLiteral("The recogniser ended unexpectedly (%1).").arg(ending.description()))});
}

} // namespace

PocketSphinxRecognizer::PocketSphinxRecognizer(std::shared_ptr<RecognitionRuns> runs, QString workerProgram,
                                               PocketSphinxModel model)
    : m_runs(std::move(runs)), m_workerProgram(std::move(workerProgram)), m_model(std::move(model))
{
}

bool PocketSphinxRecognizer::isAvailable() const
{
    return QFileInfo(m_workerProgram).isExecutable() && !incompleteFile(m_model);
}

SpeechTaskState PocketSphinxRecognizer::recognitionTask(const SpeechRequest &request, ResultHandler handler)
{
    const QStringList arguments{m_model.acousticModel, m_model.languageModel, m_model.dictionary,
                                QDir::current().absoluteFilePath(request.path)};
    m_runs->start(
        std::move(handler), request.shouldReportPartialResults,
        [program = m_workerProgram, arguments](RecognitionRun &run) { recognize(run, program, arguments); });
    return SpeechTaskState::starting;
}

} // namespace talvenor
