#include "platform/linux/speech/WaveFile.h"

#include "foundation/LocalizedError.h"
#include "platform/linux/media/AudioDecoder.h"

#include <QFile>
#include <QtEndian>

#include <cerrno>
#include <limits>

namespace talvenor {

namespace {

constexpr quint32 kHeaderSize = 44;
constexpr quint32 kBytesPerSample = 2;

template<typename Number>
void append(QByteArray &bytes, Number value)
{
    const Number little = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char *>(&little), sizeof little);
}

QByteArray waveHeader(quint32 dataSize)
{
    constexpr quint32 rate = AudioDecoder::kSampleRate;
    QByteArray header("RIFF");
    append<quint32>(header, kHeaderSize - 8 + dataSize);
    header += "WAVEfmt ";
    append<quint32>(header, 16);
    append<quint16>(header, 1); // integer PCM
    append<quint16>(header, 1); // channels
    append<quint32>(header, rate);
    append<quint32>(header, rate * kBytesPerSample);
    append<quint16>(header, kBytesPerSample);
    append<quint16>(header, 8 * kBytesPerSample);
    header += "data";
    append<quint32>(header, dataSize);
    return header;
}

void writeAll(QFile &file, const char *bytes, qint64 count)
{
    if (file.write(bytes, count) != count)
        throw PlatformError(QStringLiteral("process"), EIO,
                            QStringLiteral("A temporary file cannot be written: ") + file.errorString());
}

} // namespace

void writeWaveFile(const QString &audioPath, const QString &wavePath, const std::function<bool()> &isStopped)
{
    AudioDecoder audio(audioPath);
    QFile file(wavePath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFile::ReadOwner | QFile::WriteOwner))
        throw PlatformError(QStringLiteral("process"), EIO,
                            QStringLiteral("A temporary file cannot be written: ") + file.errorString());
    writeAll(file, waveHeader(0), kHeaderSize);
    std::vector<std::int16_t> samples;
    quint64 dataSize = 0;
    while (!isStopped() && audio.read(samples)) {
        if constexpr (Q_BYTE_ORDER == Q_BIG_ENDIAN)
            qToLittleEndian<std::int16_t>(samples.data(), qsizetype(samples.size()), samples.data());
        const quint64 count = samples.size() * kBytesPerSample;
        dataSize += count;
        // The format counts in 32 bits, which is more than a day.
        if (dataSize > std::numeric_limits<quint32>::max() - kHeaderSize)
            throw PlatformError(QStringLiteral("libav"), EFBIG,
                                QStringLiteral("The audio file is too long."));
        writeAll(file, reinterpret_cast<const char *>(samples.data()), qint64(count));
    }
    if (!file.seek(0))
        throw PlatformError(QStringLiteral("process"), EIO,
                            QStringLiteral("A temporary file cannot be written: ") + file.errorString());
    writeAll(file, waveHeader(quint32(dataSize)), kHeaderSize);
    if (!file.flush())
        throw PlatformError(QStringLiteral("process"), EIO,
                            QStringLiteral("A temporary file cannot be written: ") + file.errorString());
}

} // namespace talvenor
