#include "platform/linux/speech/WhisperProgram.h"

#include "foundation/LocalizedError.h"
#include "platform/linux/speech/ChildProcess.h"

#include <QStandardPaths>

#include <array>

namespace talvenor {

namespace {

using namespace std::chrono_literals;

// Not the "main" of a source build: a program of that name may be anything.
constexpr std::array kNames{"whisper-cli", "whisper-cpp", "whispercpp"};

// JSON output, and lines that break at words: together they give one entry for each word.
constexpr std::array kNeededOptions{"-oj", "-sow"};

// The option that is missing in the program's help; absent if all are there.
std::optional<QString> problemOf(const QString &program)
{
    QByteArray help;
    try {
        ChildProcess process(program, {QStringLiteral("--help")});
        const auto collect = [&help](const QByteArray &line) { help += line + '\n'; };
        static_cast<void>(process.wait(collect, 10s)); // versions differ in the exit code
        help += process.errorOutput();
    } catch (const PlatformError &error) {
        return program + QStringLiteral(": ") + error.errorDescription();
    }
    const QList<QByteArray> words = help.replace(',', ' ').simplified().split(' ');
    for (const char *option : kNeededOptions) {
        if (!words.contains(option))
            return program + QStringLiteral(" does not know ") + QString::fromLatin1(option);
    }
    return std::nullopt;
}

} // namespace

std::optional<QString> findWhisperProgram(const QStringList &folders, QStringList &problems)
{
    for (const char *name : kNames) {
        const QString program = QStandardPaths::findExecutable(QString::fromLatin1(name), folders);
        if (program.isEmpty())
            continue;
        if (const auto problem = problemOf(program))
            problems.append(*problem);
        else
            return program;
    }
    problems.append(QStringLiteral("no usable whisper-cli, whisper-cpp or whispercpp in ") +
                    folders.join(QStringLiteral(", ")));
    return std::nullopt;
}

} // namespace talvenor
