#pragma once

#include <QByteArray>
#include <QProcess>

#include <cstdint>
#include <memory>

namespace talvenor::test {

/// What a tone sounds like and where it goes.
struct Tone
{
    double frequency = 1000;       ///< hertz
    double levelDbfs = -20;        ///< of the sine; 0 reaches from -1 to 1
    QByteArray device = "speaker"; ///< a sink's name
    int channels = 2;
    int rate = 48000;
};

/// Plays a tone to the audio server from within this process, from construction to destruction.
///
/// Construction blocks until the sound flows; throws std::runtime_error when the server refuses.
class TonePlayback
{
public:
    explicit TonePlayback(const Tone &tone);
    ~TonePlayback();
    TonePlayback(const TonePlayback &) = delete;
    TonePlayback &operator=(const TonePlayback &) = delete;

    /// The reading of CLOCK_MONOTONIC, in nanoseconds, when the server began to play.
    [[nodiscard]] std::int64_t startedAt() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// Plays a tone from a process of its own, as another application would; destroying it ends that process.
class ToneProcess
{
public:
    /// Starts the process and waits until it plays; throws std::runtime_error when it does not.
    explicit ToneProcess(const Tone &tone);
    ~ToneProcess();
    ToneProcess(const ToneProcess &) = delete;
    ToneProcess &operator=(const ToneProcess &) = delete;

    /// The reading of CLOCK_MONOTONIC, in nanoseconds, when the server began to play.
    [[nodiscard]] std::int64_t startedAt() const { return m_startedAt; }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

private:
    QProcess m_process;
    std::int64_t m_startedAt = 0;
};

} // namespace talvenor::test
