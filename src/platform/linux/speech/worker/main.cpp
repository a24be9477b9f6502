#include "foundation/LocalizedError.h"
#include "platform/linux/speech/WorkerProtocol.h"
#include "platform/linux/speech/worker/WorkerRun.h"

extern "C" {
#include <libavutil/log.h>
}

#include <QFile>

#include <cstdio>

using namespace talvenor;

namespace {

void print(const QByteArray &lines)
{
    std::fwrite(lines.constData(), 1, static_cast<std::size_t>(lines.size()), stdout);
    // The application shows what is there; and a lost application ends this process here.
    std::fflush(stdout);
}

void printWords(const std::vector<DecodedWord> &words)
{
    QByteArray lines;
    for (const DecodedWord &word : words)
        lines += WorkerProtocol::wordLine(word.startMilliseconds, QByteArray::fromStdString(word.text));
    print(lines);
}

} // namespace

/// Recognises the speech of one audio file; see WorkerProtocol.
int main(int argumentCount, char **arguments)
{
    if (argumentCount != 5) {
        std::fprintf(stderr, "usage: %s ACOUSTIC-MODEL LANGUAGE-MODEL DICTIONARY AUDIO-FILE\n",
                     WorkerProtocol::kProgramName);
        return WorkerProtocol::wrongArguments;
    }
    av_log_set_level(AV_LOG_QUIET); // failures come back as error codes
    try {
        recognizeFile({arguments[1], arguments[2], arguments[3]}, QFile::decodeName(arguments[4]),
                      printWords);
    } catch (const PlatformError &error) {
        print(WorkerProtocol::errorLine(error.errorDescription()));
        return error.domain() == QStringLiteral("pocketsphinx") ? WorkerProtocol::modelNotLoaded
                                                                : WorkerProtocol::audioNotReadable;
    }
    print(WorkerProtocol::endLine());
    return WorkerProtocol::success;
}
