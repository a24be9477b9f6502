#include "support/TonePlayback.h"

#include <stdexcept>

namespace talvenor::test {

ToneProcess::ToneProcess(const Tone &tone)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(TALVENOR_TONE_PLAYER),
                    {QString::number(tone.frequency), QString::number(tone.levelDbfs),
                     QString::fromLatin1(tone.device), QString::number(tone.channels),
                     QString::number(tone.rate)});
    while (!m_process.canReadLine())
        if (!m_process.waitForReadyRead(10'000))
            throw std::runtime_error("the tone player does not play");
    m_startedAt = m_process.readLine().trimmed().toLongLong();
}

ToneProcess::~ToneProcess()
{
    // The player ends by itself when its input is closed, and with it this process.
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(5'000)) {
        m_process.kill();
        m_process.waitForFinished(5'000);
    }
}

} // namespace talvenor::test
