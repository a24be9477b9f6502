#include "audio/AudioPlayerService.h"

#include "foundation/LocalizedError.h"
#include "foundation/Task.h"
#include "platform/Platform.h"
#include "platform/PrintedLine.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace talvenor {

AudioPlayerService::AudioPlayerService(QObject *parent) : QObject(parent)
{
}

AudioPlayerService::~AudioPlayerService()
{
    stopTimer();
}

double AudioPlayerService::progress() const
{
    return m_duration > 0 ? m_currentTime / m_duration : 0;
}

void AudioPlayerService::load(const QString &url)
{
    std::unique_ptr<AudioPlayer> player;
    try {
        player = Platform::shared().createAudioPlayer(url);
    } catch (...) {
        printLine(QStringLiteral("AudioPlayerService: failed to load ") + QFileInfo(url).fileName() +
                  QStringLiteral(": ") + localizedDescription(std::current_exception()));
        return;
    }
    m_player = std::move(player);
    m_player->prepareToPlay();
    setDuration(m_player->duration());
    setCurrentTime(0);
}

void AudioPlayerService::play()
{
    if (!m_player)
        return;
    m_player->setRate(m_playbackRate);
    m_player->play();
    setIsPlaying(true);
    startTimer();
}

void AudioPlayerService::pause()
{
    if (!m_player)
        return;
    m_player->pause();
    setIsPlaying(false);
    stopTimer();
}

void AudioPlayerService::togglePlayPause()
{
    if (m_isPlaying)
        pause();
    else
        play();
}

void AudioPlayerService::seek(double seconds)
{
    // The order of the comparisons also turns what is no number into 0.
    const double target = std::max(0.0, std::min(seconds, m_duration));
    if (m_player)
        m_player->setCurrentTime(target);
    setCurrentTime(target);
}

void AudioPlayerService::skip(double seconds)
{
    seek(m_currentTime + seconds);
}

void AudioPlayerService::setRate(float rate)
{
    setPlaybackRate(rate);
    if (m_player)
        m_player->setEnableRate(true);
    if (m_isPlaying && m_player)
        m_player->setRate(rate);
}

void AudioPlayerService::stop()
{
    if (m_player)
        m_player->stop();
    m_player.reset();
    setIsPlaying(false);
    setCurrentTime(0);
    setDuration(0);
    stopTimer();
}

void AudioPlayerService::startTimer()
{
    stopTimer();
    m_timer = std::make_unique<QTimer>();
    m_timer->setInterval(std::chrono::milliseconds(100));
    m_timer->setTimerType(Qt::PreciseTimer);
    // Both the connection and the task end with the service. The work runs after the firing and not within
    // it, so that it can end the timer.
    connect(m_timer.get(), &QTimer::timeout, this, [this] {
        startTask(this, [this]() -> Task<> {
            pollPlayer();
            co_return;
        });
    });
    m_timer->start();
}

void AudioPlayerService::stopTimer()
{
    m_timer.reset();
}

void AudioPlayerService::pollPlayer()
{
    if (!m_player)
        return;
    setCurrentTime(m_player->currentTime());
    // Whoever is told of the position may have ended it all.
    if (m_player && !m_player->isPlaying() && m_isPlaying) {
        setIsPlaying(false);
        stopTimer();
    }
}

void AudioPlayerService::setIsPlaying(bool isPlaying)
{
    if (std::exchange(m_isPlaying, isPlaying) != isPlaying)
        Q_EMIT isPlayingChanged();
}

void AudioPlayerService::setCurrentTime(double seconds)
{
    if (std::exchange(m_currentTime, seconds) == seconds)
        return;
    Q_EMIT currentTimeChanged();
    Q_EMIT progressChanged();
}

void AudioPlayerService::setDuration(double seconds)
{
    if (std::exchange(m_duration, seconds) == seconds)
        return;
    Q_EMIT durationChanged();
    Q_EMIT progressChanged();
}

void AudioPlayerService::setPlaybackRate(float rate)
{
    if (std::exchange(m_playbackRate, rate) != rate)
        Q_EMIT playbackRateChanged();
}

QString AudioPlayerService::formatTime(double seconds)
{
    const auto total = qint64(seconds);
    const qint64 hours = total / 3600;
    const qint64 minutes = total % 3600 / 60;
    const QString secondsText = QStringLiteral("%1").arg(total % 60, 2, 10, QLatin1Char('0'));
    if (hours > 0)
        return QStringLiteral("%1:%2:%3").arg(hours).arg(minutes, 2, 10, QLatin1Char('0')).arg(secondsText);
    return QStringLiteral("%1:%2").arg(minutes).arg(secondsText);
}

} // namespace talvenor
