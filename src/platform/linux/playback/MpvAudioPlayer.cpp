#include "platform/linux/playback/MpvAudioPlayer.h"

#include "foundation/LocalizedError.h"
#include "platform/UnifiedLog.h"

#include <QByteArray>

#include <mpv/client.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <string_view>
#include <utility>

namespace talvenor {

namespace {

constexpr float kLowestRate = 0.5F;
constexpr float kHighestRate = 2.0F;

// The length that a file's head tells is not always that of its sound: at an end that is nearer than this the
// position is the length.
constexpr double kEndTolerance = 0.25;

// No server holds more sound than this, in seconds: a file that ends earlier was cut off or damaged, and how
// much of it is still to be heard is a guess.
constexpr double kLongestFading = 1.0;
constexpr double kGuessedFading = 0.3;

// How long the output stays open after the end.
constexpr std::chrono::milliseconds kRunningOut{500};

// A position that is further ahead of the last one than this, in seconds besides the time that has passed, is
// not where the sound is.
constexpr double kCredibleLead = 0.1;

// What libmpv's answers are told apart by.
constexpr std::uint64_t kSeekReply = 1;
constexpr std::uint64_t kLoadReply = 2;
constexpr std::uint64_t kAtEndReply = 3;

} // namespace

MpvAudioPlayer::MpvAudioPlayer(const QString &path) : m_file(std::make_shared<const PlaybackFile>(path))
{
    m_fadingAway.setSingleShot(true);
    m_fadingAway.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_fadingAway, &QTimer::timeout, &m_context, [this] { finish(); });
    m_runningOut.setSingleShot(true);
    QObject::connect(&m_runningOut, &QTimer::timeout, &m_context, [this] { setPaused(true); });
}

MpvAudioPlayer::~MpvAudioPlayer() = default;

void MpvAudioPlayer::prepareToPlay()
{
    if (m_mpv)
        return;
    try {
        m_mpv = std::make_unique<MpvInstance>(m_file, [this] {
            if (!m_isWakePending.exchange(true))
                QMetaObject::invokeMethod(
                    &m_context, [this] { handleEvents(); }, Qt::QueuedConnection);
        });
    } catch (const PlatformError &error) {
        qCCritical(platformLog) << qUtf8Printable(error.errorDescription());
        return;
    }
    mpv_handle *const handle = m_mpv->handle();
    send(mpv_observe_property(handle, 0, "time-pos", MPV_FORMAT_DOUBLE), "observe");
    send(mpv_observe_property(handle, 0, "eof-reached", MPV_FORMAT_FLAG), "observe");
    applySpeed();
}

double MpvAudioPlayer::currentTime() const
{
    // libmpv does not tell where the sound is that it has handed over entirely.
    const double since = m_isFadingAway ? secondsSinceTold() * speed() : 0;
    return std::min(m_position + since, duration());
}

void MpvAudioPlayer::setCurrentTime(double seconds)
{
    stopFading();
    if (m_runningOut.isActive()) {
        m_runningOut.stop();
        setPaused(true);
    }
    m_position = std::max(0.0, std::min(seconds, duration()));
    m_isAtEnd = false;
    if (m_stage == Stage::absent)
        return;
    if (m_isSettling)
        m_nextSeek = m_position;
    else
        seek(m_position);
}

void MpvAudioPlayer::setRate(float rate)
{
    m_rate = std::isnan(rate) ? 1 : std::clamp(rate, kLowestRate, kHighestRate);
    applySpeed();
}

void MpvAudioPlayer::setEnableRate(bool isEnabled)
{
    m_isRateEnabled = isEnabled;
    applySpeed();
}

void MpvAudioPlayer::play()
{
    prepareToPlay();
    if (!m_mpv)
        return;
    handleEvents(); // the output may have been lost just now
    if (m_isAtEnd || m_position >= duration())
        setCurrentTime(0);
    m_isPlaying = true;
    if (m_stage == Stage::absent)
        load();
    else if (!m_isSettling)
        setPaused(false);
    // Else it begins where the seek leads to: a moment of the old place would be heard first.
}

void MpvAudioPlayer::pause()
{
    m_isPlaying = false;
    m_runningOut.stop();
    if (m_isFadingAway)
        setCurrentTime(currentTime()); // libmpv's own place is the end, from which nothing goes on
    if (m_mpv)
        setPaused(true);
}

void MpvAudioPlayer::stop()
{
    pause();
    if (m_stage == Stage::absent)
        return;
    std::array<const char *, 2> command{"stop", nullptr};
    send(mpv_command_async(m_mpv->handle(), 0, command.data()), "stop");
    stopFading();
    m_stage = Stage::absent;
    m_isSettling = false;
    m_nextSeek.reset();
}

void MpvAudioPlayer::load()
{
    const QByteArray options = "start=" + QByteArray::number(m_position, 'f', 6);
    std::array<const char *, 5> command{"loadfile", MpvInstance::kUrl, "replace", options.constData(),
                                        nullptr};
    setPaused(true);
    m_stage = Stage::present;
    m_isSettling = true;
    m_nextSeek.reset();
    send(mpv_command_async(m_mpv->handle(), kLoadReply, command.data()), "load");
}

void MpvAudioPlayer::seek(double seconds)
{
    const QByteArray target = QByteArray::number(seconds, 'f', 6);
    std::array<const char *, 4> command{"seek", target.constData(), "absolute+exact", nullptr};
    m_isSettling = true;
    send(mpv_command_async(m_mpv->handle(), kSeekReply, command.data()), "seek");
}

double MpvAudioPlayer::secondsSinceTold() const
{
    return m_sinceTold.isValid() ? double(m_sinceTold.elapsed()) / 1e3 : 0;
}

double MpvAudioPlayer::speed() const
{
    return m_isRateEnabled ? double(m_rate) : 1.0;
}

void MpvAudioPlayer::applySpeed()
{
    if (!m_mpv)
        return;
    double wanted = speed();
    send(mpv_set_property_async(m_mpv->handle(), 0, "speed", MPV_FORMAT_DOUBLE, &wanted), "speed");
}

void MpvAudioPlayer::setPaused(bool isPaused)
{
    int flag = isPaused ? 1 : 0;
    send(mpv_set_property_async(m_mpv->handle(), 0, "pause", MPV_FORMAT_FLAG, &flag), "pause");
}

/// A request that libmpv does not even take: only when a thousand of them are waiting for a server that
/// hangs. Then this one is lost, as the sound is.
void MpvAudioPlayer::send(int result, const char *what)
{
    if (result < 0)
        qCWarning(platformLog, "libmpv refuses %s: %s", what, mpv_error_string(result));
}

void MpvAudioPlayer::handleEvents()
{
    m_isWakePending = false; // first, so that what comes from now on is announced again
    while (m_mpv) {
        const mpv_event *const event = mpv_wait_event(m_mpv->handle(), 0);
        if (event->event_id == MPV_EVENT_NONE)
            return;
        handle(*event);
    }
}

void MpvAudioPlayer::handle(const mpv_event &event)
{
    switch (event.event_id) {
    case MPV_EVENT_PROPERTY_CHANGE:
        propertyChanged(*static_cast<const mpv_event_property *>(event.data));
        break;
    case MPV_EVENT_PLAYBACK_RESTART:
        // The load or the seek is done. What has been told of the end is from before, so it is asked anew.
        if (m_isSettling)
            send(mpv_get_property_async(m_mpv->handle(), kAtEndReply, "eof-reached", MPV_FORMAT_FLAG), "end");
        break;
    case MPV_EVENT_GET_PROPERTY_REPLY:
        if (event.reply_userdata == kAtEndReply) {
            const auto *const property = static_cast<const mpv_event_property *>(event.data);
            settled(event.error >= 0 && property->format == MPV_FORMAT_FLAG &&
                    *static_cast<const int *>(property->data) != 0);
        }
        break;
    case MPV_EVENT_COMMAND_REPLY:
        if (event.error < 0 && event.reply_userdata == kSeekReply)
            settled(false); // it stays where it was
        else if (event.error < 0 && event.reply_userdata == kLoadReply)
            endTold({MPV_END_FILE_REASON_ERROR, event.error, 0, 0, 0});
        break;
    case MPV_EVENT_END_FILE:
        endTold(*static_cast<const mpv_event_end_file *>(event.data));
        break;
    default:
        break;
    }
}

void MpvAudioPlayer::propertyChanged(const mpv_event_property &property)
{
    if (m_isSettling || m_stage == Stage::absent)
        return;
    const std::string_view name = property.name;
    if (name == "time-pos" && property.format == MPV_FORMAT_DOUBLE)
        positionTold(*static_cast<const double *>(property.data));
    else if (name == "eof-reached" && property.format == MPV_FORMAT_FLAG &&
             *static_cast<const int *>(property.data) != 0)
        endReached();
}

void MpvAudioPlayer::positionTold(double seconds)
{
    if (m_isAtEnd || m_isFadingAway)
        return;
    // When a server has been given everything, it may call the last of it played at once.
    const double expected = m_position + secondsSinceTold() * speed();
    if (m_isPlaying && seconds > duration() - kEndTolerance && seconds > expected + kCredibleLead)
        return;
    m_sinceTold.start();
    m_position = std::clamp(seconds, 0.0, duration());
    if (m_isPlaying && seconds >= duration() + kEndTolerance)
        finish();
}

/// libmpv has let go of the file: the output has failed, or the file has.
void MpvAudioPlayer::endTold(const mpv_event_end_file &end)
{
    if (end.reason == MPV_END_FILE_REASON_STOP)
        return; // it was asked to
    qCWarning(platformLog, "Playback has ended: %s", mpv_error_string(end.error));
    m_stage = Stage::absent;
    m_isSettling = false;
    m_nextSeek.reset();
    stopFading();
    m_isPlaying = false;
}

void MpvAudioPlayer::settled(bool isAtEnd)
{
    if (!m_isSettling)
        return;
    m_isSettling = false;
    if (const auto next = std::exchange(m_nextSeek, std::nullopt)) {
        seek(*next);
        return;
    }
    m_sinceTold.start();
    if (isAtEnd)
        endReached();
    else if (m_isPlaying)
        setPaused(false);
}

/// libmpv has handed over the last sample, which the server has yet to play: some tenths of a second may be
/// in its hands, and a pause would take them out.
void MpvAudioPlayer::endReached()
{
    if (!m_isPlaying) {
        finish();
        return;
    }
    const double remaining = (duration() - m_position) / speed() - secondsSinceTold();
    m_isFadingAway = true;
    m_fadingAway.start(int(1e3 * (remaining > kLongestFading ? kGuessedFading : std::max(0.0, remaining))));
}

void MpvAudioPlayer::stopFading()
{
    m_isFadingAway = false;
    m_fadingAway.stop();
}

void MpvAudioPlayer::finish()
{
    m_position = currentTime();
    stopFading();
    m_isAtEnd = true;
    m_isPlaying = false;
    if (m_position >= duration() - kEndTolerance)
        m_position = duration();
    // A server that is short of time is later than it says: its last sound is not taken from it.
    m_runningOut.start(kRunningOut);
}

} // namespace talvenor
