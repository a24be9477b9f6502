#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace talvenor {

/// Reads the sound of an audio file as a stream of 16-bit samples, one channel at 16 kHz: the shape that
/// speech recognisers take.
///
/// Any format that libav knows as a self-contained audio file is taken; nothing is fetched, and no other
/// file that the content may name is opened. Only a little of the file is in memory at a time. A file that
/// was cut off is read up to the cut, and damaged stretches are left out. One thread at a time; blocks.
class AudioDecoder
{
public:
    /// Samples per second of what `read` gives.
    static constexpr int kSampleRate = 16'000;

    /// The formats that are taken, by libav's names: those that hold their sound themselves. Playlists and
    /// the like, which make libav open what they name, are not among them.
    static constexpr const char *kFormats =
        "mov,wav,w64,aiff,au,caf,flac,ogg,mp3,aac,ac3,amr,ape,asf,avi,matroska,mpeg,mpegts,tta,wv";

    /// Opens the file at `path`; throws PlatformError if there is none or if it holds no readable audio.
    explicit AudioDecoder(const QString &path);
    ~AudioDecoder();
    AudioDecoder(const AudioDecoder &) = delete;
    AudioDecoder &operator=(const AudioDecoder &) = delete;

    /// Replaces `samples` by the next ones, at least one and at most some seconds' worth; false at the end
    /// of the file. Throws PlatformError if the file ends without a single sample, or if the system fails to
    /// read it further.
    [[nodiscard]] bool read(std::vector<std::int16_t> &samples);

    /// The length of the file in seconds, by its head or by its extent; 0 where neither tells.
    [[nodiscard]] double duration() const;

private:
    class Decoding;
    std::unique_ptr<Decoding> m_decoding;
};

} // namespace talvenor
