#include "platform/linux/media/Mp4Boxes.h"

#include <QFile>
#include <QtEndian>

namespace talvenor {

namespace {

constexpr qint64 kShortHeader = 8;
constexpr qint64 kLongHeader = 16;

// A file of very many tiny boxes is none of ours.
constexpr int kMaximumBoxCount = 1'000'000;

struct Box
{
    QByteArray type;
    qint64 size = 0; ///< with its header; beyond the file where it says so
};

// The box at the file's position; absent if not even its header is whole.
std::optional<Box> readHeader(QFile &file)
{
    const QByteArray header = file.read(kShortHeader);
    if (header.size() < kShortHeader)
        return std::nullopt;
    Box box{header.mid(4), qint64(qFromBigEndian<quint32>(header.constData()))};
    if (box.size == 1) {
        const QByteArray longSize = file.read(kLongHeader - kShortHeader);
        if (longSize.size() < kLongHeader - kShortHeader)
            return std::nullopt;
        box.size = qFromBigEndian<qint64>(longSize.constData());
    }
    return box;
}

} // namespace

std::optional<qint64> endOfWholeBoxes(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    qint64 end = 0;
    bool hasMedia = false;
    for (int count = 0; count < kMaximumBoxCount && end < file.size(); ++count) {
        if (!file.seek(end))
            return std::nullopt;
        const std::optional<Box> box = readHeader(file);
        if (count == 0 && (!box || box->type != "ftyp"))
            return std::nullopt;
        if (!box || box->size < kShortHeader || box->size > file.size() - end)
            return hasMedia ? std::optional(end) : std::nullopt;
        hasMedia = hasMedia || box->type == "mdat";
        end += box->size;
    }
    return std::nullopt;
}

} // namespace talvenor
