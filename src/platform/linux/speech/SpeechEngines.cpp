#include "platform/linux/speech/SpeechEngines.h"

#include "platform/UnifiedLog.h"
#include "platform/linux/speech/PocketSphinxRecognizer.h"
#include "platform/linux/speech/SpeechModels.h"
#include "platform/linux/speech/WhisperProgram.h"
#include "platform/linux/speech/WhisperRecognizer.h"
#include "platform/linux/speech/WorkerProtocol.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace talvenor {

namespace {

std::unique_ptr<SpeechRecognizer> makeWhisper(const QString &language, const SpeechSurroundings &surroundings,
                                              const std::shared_ptr<RecognitionRuns> &runs,
                                              QStringList &problems)
{
    const bool needsMultilingual = language != QStringLiteral("en");
    const ModelSearch<WhisperModel> models = findWhisperModel(surroundings.modelFolders, needsMultilingual);
    problems += models.problems;
    const std::optional<QString> program = findWhisperProgram(surroundings.programFolders, problems);
    if (!models.model || !program)
        return nullptr;
    return std::make_unique<WhisperRecognizer>(
        runs, WhisperRecognizer::Engine{*program, models.model->path, language});
}

std::unique_ptr<SpeechRecognizer> makePocketSphinx(const SpeechSurroundings &surroundings,
                                                   const std::shared_ptr<RecognitionRuns> &runs,
                                                   QStringList &problems)
{
    const ModelSearch<PocketSphinxModel> models = findPocketSphinxModel(surroundings.modelFolders);
    problems += models.problems;
    const QString worker = QStandardPaths::findExecutable(QString::fromLatin1(WorkerProtocol::kProgramName),
                                                          surroundings.workerFolders);
    if (worker.isEmpty())
        problems.append(QString::fromLatin1(WorkerProtocol::kProgramName) +
                        QStringLiteral(" is missing in ") +
                        surroundings.workerFolders.join(QStringLiteral(", ")));
    if (!models.model || worker.isEmpty())
        return nullptr;
    return std::make_unique<PocketSphinxRecognizer>(runs, worker, *models.model);
}

} // namespace

SpeechSurroundings SpeechSurroundings::standard()
{
    const QDir here(QCoreApplication::applicationDirPath());
    return {
        speechModelFolders(),
        qEnvironmentVariable("PATH").split(QDir::listSeparator(), Qt::SkipEmptyParts),
        {here.path(), QDir::cleanPath(here.filePath(QStringLiteral("../bin"))),
         QDir::cleanPath(here.filePath(QStringLiteral("../libexec/talvenor")))},
    };
}

std::unique_ptr<SpeechRecognizer> speechRecognizerForLocale(const QString &localeIdentifier,
                                                            const SpeechSurroundings &surroundings,
                                                            const std::shared_ptr<RecognitionRuns> &runs)
{
    const bool isEnglish = localeIdentifier == QStringLiteral("en-US");
    if (!isEnglish && localeIdentifier != QStringLiteral("de-DE")) {
        qCCritical(platformLog, "No speech recogniser knows the locale %s", qUtf8Printable(localeIdentifier));
        return nullptr;
    }
    QStringList problems;
    const char *engine = "whisper.cpp";
    std::unique_ptr<SpeechRecognizer> recognizer =
        makeWhisper(isEnglish ? QStringLiteral("en") : QStringLiteral("de"), surroundings, runs, problems);
    if (!recognizer && isEnglish) {
        engine = "PocketSphinx";
        recognizer = makePocketSphinx(surroundings, runs, problems);
    }
    const QString told = problems.join(QStringLiteral("; "));
    if (!recognizer)
        qCCritical(platformLog, "No speech recogniser for %s: %s", qUtf8Printable(localeIdentifier),
                   qUtf8Printable(told));
    else if (told.isEmpty())
        qCInfo(platformLog, "Speech recogniser for %s: %s", qUtf8Printable(localeIdentifier), engine);
    else
        qCInfo(platformLog, "Speech recogniser for %s: %s (%s)", qUtf8Printable(localeIdentifier), engine,
               qUtf8Printable(told));
    return recognizer;
}

} // namespace talvenor
