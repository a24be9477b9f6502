#include "platform/linux/media/LibavAudioFile.h"

#include "foundation/LocalizedError.h"
#include "platform/UnifiedLog.h"
#include "platform/linux/media/FastStartRewriter.h"

#include <cerrno>
#include <unistd.h>

namespace talvenor {

namespace {

const AudioFileSettings &checked(const AudioFileSettings &settings)
{
    if (settings.formatID != kAudioFormatMPEG4AAC || settings.channelCount != 1) {
        throw PlatformError(QStringLiteral("libav"), AVERROR(EINVAL),
                            QStringLiteral("Only AAC with one channel can be recorded."));
    }
    return settings;
}

FileDescriptor createFile(const QString &path)
{
    ReplacementFile file(path);
    file.replace();
    return file.takeDescriptor();
}

} // namespace

// The encoder is made before the file, so that settings that cannot be met replace nothing.
LibavAudioFile::LibavAudioFile(const QString &path, const AudioFileSettings &settings)
    : m_path(path), m_settings(checked(settings)),
      m_encoder(settings.sampleRate, [this](AVPacket &packet) { m_muxer.add(packet); }),
      m_muxer(m_encoder.context())
{
    m_file = createFile(path);
}

LibavAudioFile::~LibavAudioFile()
{
    const auto attempt = [this](auto &&step) {
        try {
            step();
        } catch (...) {
            const QString reason = localizedDescription(std::current_exception());
            qCCritical(platformLog, "The end of %s is lost. %s", qUtf8Printable(m_path),
                       qUtf8Printable(reason));
        }
    };
    // Each for itself: what is encoded already is written even if the rest cannot be encoded.
    attempt([this] { m_encoder.finish(); });
    attempt([this] { m_muxer.finish(); });
    attempt([this] { writeFragments(); });
    if (m_length > 0)
        rewriteForFastStart(std::move(m_file), m_path);
}

void LibavAudioFile::write(const PcmBuffer &buffer)
{
    if (buffer.frameLength() == 0)
        return;
    if (buffer.floatChannelData() == nullptr || buffer.format().channelCount != 1 ||
        buffer.format().sampleRate != m_settings.sampleRate) {
        throw PlatformError(QStringLiteral("libav"), AVERROR(EINVAL),
                            QStringLiteral("The sound is not of the kind that the file was made for."));
    }
    m_encoder.encode(std::span(buffer.floatChannelData()[0], buffer.frameLength()));
    writeFragments();
}

void LibavAudioFile::writeFragments()
{
    std::deque<std::vector<std::uint8_t>> &fragments = m_muxer.fragments();
    while (!fragments.empty()) {
        writeFragment(fragments.front());
        m_length += std::int64_t(fragments.front().size());
        fragments.pop_front();
    }
}

void LibavAudioFile::writeFragment(std::span<const std::uint8_t> fragment)
{
    std::size_t written = 0;
    while (written < fragment.size()) {
        const ssize_t count = ::pwrite(m_file.get(), fragment.data() + written, fragment.size() - written,
                                       m_length + std::int64_t(written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            const int number = count < 0 ? errno : EIO;
            // Half a fragment is taken back; if that fails, the next attempt overwrites it anyway.
            static_cast<void>(::ftruncate(m_file.get(), m_length) == 0);
            throwPosixError(number, QStringLiteral("The recording could not be written to the disk"));
        }
        written += std::size_t(count);
    }
}

} // namespace talvenor
