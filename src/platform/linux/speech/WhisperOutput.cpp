#include "platform/linux/speech/WhisperOutput.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <algorithm>

namespace talvenor {

namespace {

// Takes out what stands between `open` and `close`, over several words too; a bracket that is never closed is
// text.
QList<SpeechSegment> withoutBracketed(const QList<SpeechSegment> &words, QChar open, QChar close)
{
    QList<SpeechSegment> kept;
    for (qsizetype index = 0; index < words.size(); ++index) {
        if (words[index].substring.startsWith(open)) {
            const auto last =
                std::find_if(words.begin() + index, words.end(),
                             [close](const SpeechSegment &word) { return word.substring.contains(close); });
            if (last != words.end()) {
                index = last - words.begin();
                continue;
            }
        }
        kept.append(words[index]);
    }
    return kept;
}

} // namespace

std::optional<QList<SpeechSegment>> parseWhisperJson(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(QString::fromUtf8(json).toUtf8());
    const QJsonValue transcription = document.object().value(QStringLiteral("transcription"));
    if (!transcription.isArray())
        return std::nullopt;
    QList<SpeechSegment> words;
    double latest = 0;
    for (const QJsonValue &entry : transcription.toArray()) {
        const QString text = entry[QStringLiteral("text")].toString().trimmed();
        if (text.isEmpty())
            continue;
        const double start = entry[QStringLiteral("offsets")][QStringLiteral("from")].toDouble() / 1000;
        latest = std::max(latest, start);
        words.append({text, latest});
    }
    words = withoutBracketed(words, u'[', u']');
    // A silent recording can come out as "(silence)".
    return withoutBracketed(words, u'(', u')').isEmpty() ? QList<SpeechSegment>() : words;
}

std::optional<SpeechSegment> parseWhisperLine(const QByteArray &line)
{
    static const QRegularExpression pattern(QStringLiteral(
        R"(^\[(\d{2,3}):(\d\d):(\d\d)\.(\d{3}) --> \d{2,3}:\d\d:\d\d\.\d{3}\]\s*([^\s\[].*)$)"));
    const QRegularExpressionMatch match = pattern.match(QString::fromUtf8(line).trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const double seconds = (match.captured(1).toInt() * 60 + match.captured(2).toInt()) * 60 +
                           match.captured(3).toInt() + match.captured(4).toInt() / 1000.0;
    return SpeechSegment{match.captured(5), seconds};
}

} // namespace talvenor
