#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace talvenor::test {

/// Runs a program to its end and gives what it has printed; throws std::runtime_error if it fails or
/// complains.
inline QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        throw std::runtime_error(
            (program + QStringLiteral(": ") + QString::fromUtf8(process.readAllStandardError()))
                .toStdString());
    return process.readAllStandardOutput();
}

/// The first channel of an audio file at the file's own rate, decoded by ffmpeg; `seekSeconds` says where to
/// begin.
inline std::vector<float> decodedAudio(const QString &path, double seekSeconds = 0)
{
    QStringList arguments{QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-nostdin")};
    if (seekSeconds > 0)
        arguments += {QStringLiteral("-ss"), QString::number(seekSeconds)};
    arguments += {QStringLiteral("-i"),    QStringLiteral("file:") + path, QStringLiteral("-map_channel"),
                  QStringLiteral("0.0.0"), QStringLiteral("-f"),           QStringLiteral("f32le"),
                  QStringLiteral("-")};
    const QByteArray bytes = outputOf(QStringLiteral("ffmpeg"), arguments);
    std::vector<float> samples(std::size_t(bytes.size()) / sizeof(float));
    std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(float));
    return samples;
}

/// What ffprobe says of an audio file: the objects "format" and "streams", and "packets" if asked for.
inline QJsonObject probedAudio(const QString &path, bool withPackets = false)
{
    QStringList arguments{QStringLiteral("-v"),           QStringLiteral("error"),
                          QStringLiteral("-of"),          QStringLiteral("json"),
                          QStringLiteral("-show_format"), QStringLiteral("-show_streams")};
    if (withPackets)
        arguments.append(QStringLiteral("-show_packets"));
    arguments.append(QStringLiteral("file:") + path);
    return QJsonDocument::fromJson(outputOf(QStringLiteral("ffprobe"), arguments)).object();
}

} // namespace talvenor::test
