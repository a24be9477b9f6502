#pragma once

#include "foundation/LocalizedError.h"
#include "platform/Platform.h"
#include "platform/linux/media/FastStartRewriter.h"
#include "platform/linux/media/LinuxMedia.h"
#include "support/DecodedAudio.h"
#include "support/LogCapture.h"
#include "support/ToneAnalysis.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <numbers>
#include <sys/stat.h>

namespace talvenor::test {

/// The log channel of the platform.
inline const QString platformChannel = QStringLiteral("com.talvenor.app.Platform");

/// A sine of a level, its phase going on from block to block.
class Tone
{
public:
    Tone(double rate, double frequency, double levelDbfs)
        : m_rate(rate), m_frequency(frequency), m_amplitude(std::pow(10.0, levelDbfs / 20.0))
    {
    }
    PcmBuffer next(std::uint32_t frames)
    {
        PcmBuffer buffer({m_rate, 1}, frames);
        for (std::uint32_t i = 0; i < frames; ++i, ++m_position) {
            buffer.floatChannelData()[0][i] = float(
                m_amplitude * std::sin(2 * std::numbers::pi * m_frequency * double(m_position) / m_rate));
        }
        return buffer;
    }
    /// Writes this many frames in blocks of 4096.
    void writeTo(AudioFile &file, std::int64_t frames)
    {
        while (frames > 0) {
            const auto count = std::uint32_t(std::min<std::int64_t>(frames, 4'096));
            file.write(next(count));
            frames -= count;
        }
    }

private:
    double m_rate;
    double m_frequency;
    double m_amplitude;
    std::int64_t m_position = 0;
};

inline std::unique_ptr<AudioFile> createFile(const QString &path, double rate = 48'000)
{
    return Platform::shared().createAudioFile(path, {.sampleRate = rate});
}

/// The middle of a signal, away from the edges of a tone.
inline std::span<const float> middle(const std::vector<float> &samples)
{
    return std::span(samples).subspan(samples.size() / 5, samples.size() * 3 / 5);
}

/// The names of the boxes at the top of an MPEG-4 file, in order.
inline QStringList boxes(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList names;
    while (file.pos() + 8 <= file.size()) {
        const qint64 start = file.pos();
        const QByteArray header = file.read(8);
        quint32 size = 0;
        for (int i = 0; i < 4; ++i)
            size = size << 8U | quint8(header[i]);
        names.append(QString::fromLatin1(header.mid(4)));
        if (size < 8 || !file.seek(start + size))
            return {};
    }
    return names;
}

inline double duration(const QString &path)
{
    return probedAudio(path)[u"format"].toObject()[u"duration"].toString().toDouble();
}

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

inline void putFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

inline struct stat statusOf(const QString &path)
{
    struct stat status
    {
    };
    static_cast<void>(::stat(QFile::encodeName(path).constData(), &status));
    return status;
}

} // namespace talvenor::test
