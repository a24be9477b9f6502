#include "speech/SegmentGrouping.h"

namespace talvenor {

namespace {

constexpr int kWordsPerLine = 15;

bool endsLine(const QString &word)
{
    return !word.isEmpty() && QStringView(u".?!:").contains(word.back());
}

TranscriptSegment makeLine(double startTime, const QString &text)
{
    TranscriptSegment line;
    line.timestamp = startTime;
    line.text = text;
    return line;
}

} // namespace

QList<TranscriptSegment> groupSegments(const QList<TranscriptSegment> &words)
{
    QList<TranscriptSegment> lines;
    QString text;
    double startTime = 0;
    int wordCount = 0;
    for (const TranscriptSegment &word : words) {
        // The text and not the count decides what is first, so that an empty word starts no line.
        if (text.isEmpty())
            startTime = word.timestamp;
        else
            text += u' ';
        text += word.text;
        ++wordCount;
        if (endsLine(word.text) || wordCount >= kWordsPerLine) {
            lines.append(makeLine(startTime, text));
            text.clear();
            wordCount = 0;
        }
    }
    if (!text.isEmpty())
        lines.append(makeLine(startTime, text));
    return lines;
}

} // namespace talvenor
