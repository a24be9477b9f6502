#include "recorder/ParticipantsLine.h"

#include <algorithm>

namespace talvenor {

namespace {

bool isBlank(QChar character)
{
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

bool isBlankOrBreak(QChar character)
{
    return isBlank(character) || character == u'\n' || character == u'\r' || character == u'\v' ||
           character == u'\f' || character == QChar(0x85) || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

QStringView trimmed(QStringView text, bool (*leftOut)(QChar))
{
    const auto begin = std::find_if_not(text.begin(), text.end(), leftOut);
    auto end = text.end();
    while (end != begin && leftOut(*(end - 1)))
        --end;
    return {begin, end};
}

} // namespace

ParsedSummary parseParticipants(const QString &summary)
{
    constexpr QStringView marker = u"PARTICIPANTS:";
    ParsedSummary parsed;
    QStringList kept;
    for (const QStringView line : QStringView(summary).split(u'\n')) {
        const QStringView text = trimmed(line, isBlank);
        // The whole line is upper-cased, as the marker's rule says, which folds more than a plain comparison
        // without case: a dotless i counts as an i.
        if (!text.first(std::min(text.size(), marker.size())).toString().toUpper().startsWith(marker)) {
            kept.append(line.toString());
            continue;
        }
        parsed.names.clear();
        for (const QStringView piece : text.sliced(marker.size()).split(u',')) {
            const QStringView name = trimmed(piece, isBlank);
            if (!name.isEmpty())
                parsed.names.append(name.toString());
        }
    }
    const QString body = kept.join(u'\n');
    parsed.cleaned = trimmed(body, isBlankOrBreak).toString();
    if (parsed.cleaned.isNull())
        parsed.cleaned = QStringLiteral(""); // an empty summary is a summary
    return parsed;
}

} // namespace talvenor
