#include "platform/linux/playback/MpvInstance.h"

#include "foundation/LocalizedError.h"
#include "platform/linux/media/AudioDecoder.h"

#include <mpv/client.h>
#include <mpv/stream_cb.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace talvenor {

namespace {

struct Option
{
    const char *name;
    const char *value;
};

constexpr std::array kOptions{
    // Nothing of the user's own mpv, and nothing beside the one file.
    Option{"config", "no"}, Option{"load-scripts", "no"}, Option{"resume-playback", "no"},
    Option{"autoload-files", "no"}, Option{"access-references", "no"}, Option{"load-unsafe-playlists", "no"},
    Option{"demuxer", "lavf"}, Option{"cache", "no"},
    // Sound alone: no picture, no terminal, no keys.
    Option{"terminal", "no"}, Option{"input-default-bindings", "no"}, Option{"input-media-keys", "no"},
    Option{"vid", "no"}, Option{"sid", "no"}, Option{"vo", "null"}, Option{"audio-display", "no"},
    // libpulse names our process to the server, by which a recording leaves this sound out.
    Option{"ao", "pulse"}, Option{"audio-client-name", "Talvenor"}, Option{"title", "Talvenor"},
    Option{"audio-fallback-to-null", "no"},
    // Seeking is to the sample. The filter for the speed is there from the start: one that comes and goes
    // with the speed would be heard.
    Option{"hr-seek", "yes"}, Option{"af", "scaletempo2"}, Option{"audio-pitch-correction", "yes"},
    // The end of the file is a place like any other: one can go back from there.
    Option{"idle", "yes"}, Option{"pause", "yes"}, Option{"keep-open", "always"},
    Option{"keep-open-pause", "no"}};

// The scripts that are built in. Which there are is a matter of the version and of how it was built.
constexpr std::array kBuiltInScripts{"ytdl",
                                     "osc",
                                     "load-stats-overlay",
                                     "load-osd-console",
                                     "load-console",
                                     "load-auto-profiles",
                                     "load-select",
                                     "load-positioning",
                                     "load-commands",
                                     "load-context-menu"};

void check(int result, const char *what)
{
    if (result < 0)
        throw PlatformError(QStringLiteral("libmpv"), result,
                            QStringLiteral("The audio player cannot be started: %1: %2")
                                .arg(QString::fromLatin1(what), QString::fromUtf8(mpv_error_string(result))));
}

/// How far one reader of a file has got; libmpv uses each on one thread at a time.
struct Reader
{
    const PlaybackFile *file;
    qint64 position;
};

int openReader(void *file, char *, mpv_stream_cb_info *stream)
{
    auto reader = std::make_unique<Reader>(Reader{static_cast<const PlaybackFile *>(file), 0});
    stream->read_fn = [](void *cookie, char *buffer, std::uint64_t count) {
        auto &asked = *static_cast<Reader *>(cookie);
        const qint64 got = asked.file->read(buffer, count, asked.position);
        asked.position += std::max<qint64>(got, 0);
        return std::int64_t(got);
    };
    stream->seek_fn = [](void *cookie, std::int64_t offset) {
        static_cast<Reader *>(cookie)->position = offset;
        return offset;
    };
    stream->size_fn = [](void *cookie) { return std::int64_t(static_cast<Reader *>(cookie)->file->size()); };
    stream->close_fn = [](void *cookie) {
        const std::unique_ptr<Reader> closed(static_cast<Reader *>(cookie));
    };
    stream->cookie = reader.release();
    return 0;
}

/// The libmpvs that are ending.
struct Endings
{
    std::mutex lock;
    std::condition_variable changed;
    int count = 0; ///< guarded by lock
};

/// Lets them come to their end with the process, unless one waits for a sound server that does not answer.
class EndingsOfProcess
{
public:
    ~EndingsOfProcess()
    {
        std::unique_lock guard(m_endings->lock);
        m_endings->changed.wait_for(guard, std::chrono::seconds(1), [this] { return m_endings->count == 0; });
    }
    [[nodiscard]] std::shared_ptr<Endings> endings() const { return m_endings; }

private:
    std::shared_ptr<Endings> m_endings = std::make_shared<Endings>();
};

void endInBackground(mpv_handle *handle, std::shared_ptr<const PlaybackFile> file)
{
    static const EndingsOfProcess ofProcess;
    const std::shared_ptr<Endings> endings = ofProcess.endings();
    {
        const std::lock_guard guard(endings->lock);
        ++endings->count;
    }
    auto end = [handle, endings, file = std::move(file)] {
        mpv_terminate_destroy(handle); // it reads the file up to here
        // Told while the lock is held: after that the process may be over.
        const std::lock_guard guard(endings->lock);
        --endings->count;
        endings->changed.notify_all();
    };
    try {
        std::thread(end).detach();
    } catch (const std::system_error &) {
        end(); // no more threads to be had: then here
    }
}

} // namespace

MpvInstance::MpvInstance(std::shared_ptr<const PlaybackFile> file, std::function<void()> wakeUp)
    : m_file(std::move(file)), m_wakeUp(std::move(wakeUp)), m_handle(mpv_create())
{
    if (!m_handle)
        throw PlatformError(QStringLiteral("libmpv"), MPV_ERROR_NOMEM,
                            QStringLiteral("The audio player cannot be started."));
    try {
        setUp();
    } catch (...) {
        mpv_terminate_destroy(m_handle);
        throw;
    }
}

MpvInstance::~MpvInstance()
{
    // Waits for a call that is under way.
    mpv_set_wakeup_callback(m_handle, nullptr, nullptr);
    endInBackground(m_handle, std::move(m_file));
}

void MpvInstance::setUp()
{
    for (const Option &option : kOptions)
        check(mpv_set_option_string(m_handle, option.name, option.value), option.name);
    for (const char *const script : kBuiltInScripts)
        if (const int result = mpv_set_option_string(m_handle, script, "no");
            result != MPV_ERROR_OPTION_NOT_FOUND)
            check(result, script);
    const QByteArray demuxerOptions =
        QByteArray("protocol_whitelist=none,format_whitelist=[") + AudioDecoder::kFormats + ']';
    check(mpv_set_option_string(m_handle, "demuxer-lavf-o", demuxerOptions.constData()), "demuxer-lavf-o");
    check(mpv_initialize(m_handle), "initialize");
    auto *const file = const_cast<PlaybackFile *>(m_file.get()); // which openReader only reads
    check(mpv_stream_cb_add_ro(m_handle, "recording", file, openReader), "stream");
    mpv_set_wakeup_callback(
        m_handle, [](void *self) { static_cast<MpvInstance *>(self)->m_wakeUp(); }, this);
}

} // namespace talvenor
