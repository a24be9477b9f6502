#pragma once

#include "foundation/Task.h"
#include "platform/AudioBuffer.h"

#include <QList>
#include <QString>

#include <cstddef>
#include <optional>

namespace talvenor {

/// One place where the computer plays sound to, which a stream can listen to.
struct ShareableDisplay
{
    QString identifier;
};

/// What the system lets a program listen to.
struct ShareableContent
{
    QList<ShareableDisplay> displays;
};

/// What a stream of system audio is to deliver.
struct SystemAudioConfiguration
{
    bool capturesAudio = false;
    bool excludesCurrentProcessAudio = false;
    int channelCount = 0;
    int sampleRate = 0; ///< frames per second
};

/// What kind of samples a stream delivers.
enum class StreamOutputType { screen = 0, audio = 1 };

/// One delivery of a stream: interleaved 32-bit floats in one block, valid during the call.
struct SampleBuffer
{
    const void *data = nullptr; ///< null where the delivery holds no readable data
    std::size_t byteLength = 0;
    std::optional<AudioFormat> format; ///< absent only through a programming error
};

/// Receives a stream's deliveries, one at a time, on the stream's own thread.
class SystemAudioOutput
{
public:
    SystemAudioOutput() = default;
    SystemAudioOutput(const SystemAudioOutput &) = delete;
    SystemAudioOutput &operator=(const SystemAudioOutput &) = delete;
    virtual ~SystemAudioOutput() = default;

    virtual void didOutputSampleBuffer(const SampleBuffer &buffer, StreamOutputType type) = 0;
};

/// The sound that the computer plays, this process's own left out.
///
/// Made and used on the main thread. Destroying a stream stops it; no delivery comes after that.
class SystemAudioStream
{
public:
    SystemAudioStream() = default;
    SystemAudioStream(const SystemAudioStream &) = delete;
    SystemAudioStream &operator=(const SystemAudioStream &) = delete;
    virtual ~SystemAudioStream() = default;

    /// Names who receives the samples, which the stream keeps alive; throws PlatformError if it takes none.
    virtual void addStreamOutput(std::shared_ptr<SystemAudioOutput> output, StreamOutputType type) = 0;

    /// Starts the deliveries; throws PlatformError if the sound server refuses.
    virtual Task<> startCapture() = 0;

    /// Stops the deliveries: when it has returned, none comes any more. Throws PlatformError if nothing runs.
    virtual Task<> stopCapture() = 0;
};

} // namespace talvenor
