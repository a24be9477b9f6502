#include "speech_support/SpokenAudio.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace talvenor::test {

namespace {

constexpr int kHeaderSize = 44;

void run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        qFatal("%s failed: %s", qUtf8Printable(program), process.readAllStandardError().constData());
}

std::int16_t toSample(double value)
{
    return static_cast<std::int16_t>(std::clamp(std::lround(value * 32767), -32768L, 32767L));
}

} // namespace

Samples speak(const QString &voice, const QString &text)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("speech.wav"));
    run(QStringLiteral("flite"),
        {QStringLiteral("-voice"), voice, QStringLiteral("-t"), text, QStringLiteral("-o"), path});
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("flite has written nothing");
    const QByteArray bytes = file.readAll();
    if (bytes.size() <= kHeaderSize || qFromLittleEndian<quint32>(bytes.constData() + 24) != kSampleRate)
        qFatal("flite's voice %s has another rate", qUtf8Printable(voice));
    Samples samples(std::size_t(bytes.size() - kHeaderSize) / 2);
    qFromLittleEndian<std::int16_t>(bytes.constData() + kHeaderSize, qsizetype(samples.size()),
                                    samples.data());
    return samples;
}

Samples silence(double seconds)
{
    return Samples(std::size_t(seconds * kSampleRate), 0);
}

Samples noise(double seconds, double decibelsOfFullScale)
{
    std::mt19937 generator(1);
    std::normal_distribution<double> distribution(0, std::pow(10, decibelsOfFullScale / 20));
    Samples samples(std::size_t(seconds * kSampleRate));
    std::generate(samples.begin(), samples.end(), [&] { return toSample(distribution(generator)); });
    return samples;
}

Samples tone(double seconds, double hertz, double decibelsOfFullScale)
{
    const double amplitude = std::pow(10, decibelsOfFullScale / 20) * std::numbers::sqrt2;
    Samples samples(std::size_t(seconds * kSampleRate));
    for (std::size_t index = 0; index < samples.size(); ++index)
        samples[index] =
            toSample(amplitude * std::sin(2 * std::numbers::pi * hertz * double(index) / kSampleRate));
    return samples;
}

double onset(const Samples &samples)
{
    const auto first =
        std::find_if(samples.begin(), samples.end(), [](int sample) { return std::abs(sample) > 600; });
    return double(first - samples.begin()) / kSampleRate;
}

void writeWave(const QString &path, const Samples &samples)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("%s cannot be written", qUtf8Printable(path));
    QByteArray header(kHeaderSize, '\0');
    const auto dataSize = quint32(samples.size() * 2);
    const auto put = [&header](int position, auto value) {
        qToLittleEndian(value, header.data() + position);
    };
    header.replace(0, 4, "RIFF");
    put(4, quint32(dataSize + 36));
    header.replace(8, 8, "WAVEfmt ");
    put(16, quint32(16));
    put(20, quint16(1));
    put(22, quint16(1));
    put(24, quint32(kSampleRate));
    put(28, quint32(kSampleRate * 2));
    put(32, quint16(2));
    put(34, quint16(16));
    header.replace(36, 4, "data");
    put(40, dataSize);
    file.write(header);
    QByteArray bytes(qsizetype(dataSize), '\0');
    if (!samples.empty()) // an empty one has no address, which must not be handed on
        qToLittleEndian<std::int16_t>(samples.data(), qsizetype(samples.size()), bytes.data());
    if (file.write(bytes) != bytes.size())
        qFatal("%s cannot be written", qUtf8Printable(path));
}

void writeM4a(const QString &path, const Samples &samples, const QStringList &muxerOptions)
{
    const QTemporaryDir folder;
    const QString wave = folder.filePath(QStringLiteral("sound.wav"));
    writeWave(wave, samples);
    QStringList arguments{QStringLiteral("-v"),
                          QStringLiteral("error"),
                          QStringLiteral("-y"),
                          QStringLiteral("-i"),
                          wave,
                          QStringLiteral("-ar"),
                          QStringLiteral("48000"),
                          QStringLiteral("-c:a"),
                          QStringLiteral("aac"),
                          QStringLiteral("-b:a"),
                          QStringLiteral("96k")};
    arguments += muxerOptions;
    arguments.append(path);
    run(QStringLiteral("ffmpeg"), arguments);
}

QStringList SpokenMeeting::words() const
{
    QStringList all;
    for (const Turn &turn : turns)
        all += turn.words;
    return all;
}

SpokenMeeting speakMeeting()
{
    QFile file(QStringLiteral(TALVENOR_MEETING_SCRIPT));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        qFatal("the script of the meeting is missing");
    SpokenMeeting meeting;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        const qsizetype colon = line.indexOf(u':');
        const QString text = line.mid(colon + 1).trimmed();
        const Samples spoken = speak(line.left(colon), text);
        QString plain = text.toLower();
        plain.remove(QRegularExpression(QStringLiteral("[^a-z' ]")));
        meeting.turns.append({plain.split(u' ', Qt::SkipEmptyParts),
                              double(meeting.samples.size()) / kSampleRate + onset(spoken)});
        const Samples pause = silence(0.8);
        meeting.samples.insert(meeting.samples.end(), spoken.begin(), spoken.end());
        meeting.samples.insert(meeting.samples.end(), pause.begin(), pause.end());
    }
    return meeting;
}

} // namespace talvenor::test
