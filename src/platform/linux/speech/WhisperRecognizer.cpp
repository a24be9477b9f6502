#include "platform/linux/speech/WhisperRecognizer.h"

#include "platform/UnifiedLog.h"
#include "platform/linux/speech/PrivateFolder.h"
#include "platform/linux/speech/WaveFile.h"
#include "platform/linux/speech/WhisperOutput.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>

namespace talvenor {

namespace {

constexpr int kExitModelNotLoaded = 3;
constexpr int kMaximumThreads = 8;               // more of them only wait for each other
constexpr qint64 kMaximumJsonSize = 256LL << 20; // a day of speech has a tenth of it

// Success is a result: the program also ends with 0 when it could not read the audio.
std::optional<QList<SpeechSegment>> readResult(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kMaximumJsonSize)
        return std::nullopt;
    return parseWhisperJson(file.readAll());
}

void recognize(RecognitionRun &run, const WhisperRecognizer::Engine &engine, const SpeechRequest &request)
{
    const PrivateFolder folder;
    const QString wavePath = folder.filePath(QStringLiteral("audio.wav"));
    writeWaveFile(request.path, wavePath, [&run] { return run.isStopped(); });
    if (run.isStopped())
        return;

    const int threads = std::clamp(QThread::idealThreadCount(), 1, kMaximumThreads);
    const QString outputBase = folder.filePath(QStringLiteral("result"));
    const QStringList arguments{QStringLiteral("-m"),
                                engine.model,
                                QStringLiteral("-f"),
                                wavePath,
                                QStringLiteral("-l"),
                                engine.language,
                                QStringLiteral("-t"),
                                QString::number(threads),
                                QStringLiteral("-oj"),
                                QStringLiteral("-ml"),
                                QStringLiteral("1"),
                                QStringLiteral("-sow"),
                                QStringLiteral("-pp"),
                                QStringLiteral("-of"),
                                outputBase};
    const ChildProcess::Ending ending =
        run.runProgram(engine.program, arguments, [&run](const QByteArray &line) {
            if (const auto word = parseWhisperLine(line))
                run.addWord(*word);
        });
    if (run.isStopped())
        return;
    if (ending.isSuccess()) {
        if (const auto result = readResult(outputBase + QStringLiteral(".json")))
            run.reportFinal(*result);
        else
            run.reportError({engineFailed, QStringLiteral("The recogniser has written no result.")});
    } else if (!ending.bySignal && ending.number == kExitModelNotLoaded) {
        run.reportError({modelNotLoaded, QStringLiteral("The speech model cannot be loaded.")});
    } else {
        run.reportError(
            {engineFailed,
             QStringLiteral("The recogniser ended unexpectedly (%1).").arg(ending.description())});
    }
    if (!ending.isSuccess())
        qCCritical(platformLog, "whisper.cpp ended with %s", qUtf8Printable(ending.description()));
}

} // namespace

WhisperRecognizer::WhisperRecognizer(std::shared_ptr<RecognitionRuns> runs, Engine engine)
    : m_runs(std::move(runs)), m_engine(std::move(engine))
{
}

bool WhisperRecognizer::isAvailable() const
{
    return QFileInfo(m_engine.program).isExecutable() && QFileInfo(m_engine.model).isReadable();
}

SpeechTaskState WhisperRecognizer::recognitionTask(const SpeechRequest &request, ResultHandler handler)
{
    m_runs->start(std::move(handler), request.shouldReportPartialResults,
                  [engine = m_engine, request](RecognitionRun &run) { recognize(run, engine, request); });
    return SpeechTaskState::starting;
}

} // namespace talvenor
