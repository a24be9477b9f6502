#include "platform/linux/speech/WorkerProtocol.h"

#include <QList>

namespace talvenor::WorkerProtocol {

QByteArray wordLine(qint64 milliseconds, const QByteArray &word)
{
    return "word\t" + QByteArray::number(milliseconds) + '\t' + word + '\n';
}

QByteArray errorLine(const QString &description)
{
    // A text of several lines would not survive the way.
    return "error\t" + description.simplified().toUtf8() + '\n';
}

QByteArray endLine()
{
    return "end\n";
}

std::optional<SpeechSegment> parseWordLine(const QByteArray &line)
{
    const QList<QByteArray> fields = line.split('\t');
    if (fields.size() != 3 || fields[0] != "word" || fields[2].isEmpty())
        return std::nullopt;
    bool isNumber = false;
    const qint64 milliseconds = fields[1].toLongLong(&isNumber);
    if (!isNumber || milliseconds < 0)
        return std::nullopt;
    return SpeechSegment{QString::fromUtf8(fields[2]), double(milliseconds) / 1000};
}

std::optional<QString> parseErrorLine(const QByteArray &line)
{
    if (!line.startsWith("error\t"))
        return std::nullopt;
    return QString::fromUtf8(line.mid(6));
}

bool isEndLine(const QByteArray &line)
{
    return line == "end";
}

} // namespace talvenor::WorkerProtocol
