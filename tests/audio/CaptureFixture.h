#pragma once

#include "audio/AudioCaptureService.h"
#include "support/Await.h"
#include "support/FakeAudio.h"
#include "support/LogCapture.h"

#include <QObject>
#include <QTest>

#include <memory>
#include <optional>

namespace talvenor::test {

/// The log channel of the capture path.
inline const QString channel = QStringLiteral("com.talvenor.app.AudioCapture");
inline const QString someURL = QStringLiteral("/nowhere/one.m4a");
inline const QString otherURL = QStringLiteral("/nowhere/two.m4a");

/// The level that a block of this constant value reads.
inline float levelOf(float amplitude)
{
    LevelMeter meter;
    meter.update(FakeAudio::block(std::vector<float>(64, amplitude)));
    return meter.level();
}

/// A fresh service over fresh fakes for each test, and a log that is listened to.
class CaptureFixture : public QObject
{
    Q_OBJECT

protected:
    /// Hands a block of the microphone to the tap of the engine with this number.
    void deliver(std::size_t engine, const std::vector<float> &samples)
    {
        PcmBuffer buffer = FakeAudio::block(samples);
        m_audio->engines.at(engine)->tap(buffer);
    }
    static void deliverTo(SystemAudioOutput &output, const std::vector<float> &samples)
    {
        output.didOutputSampleBuffer({.data = samples.data(),
                                      .byteLength = samples.size() * sizeof(float),
                                      .format = AudioFormat{48'000, 1}},
                                     StreamOutputType::audio);
    }
    void deliverSystemAudio(std::size_t stream, const std::vector<float> &samples)
    {
        deliverTo(*m_audio->streams.at(stream)->output, samples);
    }

    /// Ends the recording and waits until its file is finished.
    std::optional<QString> stop()
    {
        const std::optional<QString> url = m_service->stopRecording();
        await(m_service->finished());
        return url;
    }

    std::optional<FakeAudio> m_audio;
    std::optional<test::LogCapture> m_log;
    std::unique_ptr<AudioCaptureService> m_service;

private Q_SLOTS:
    void init()
    {
        m_audio.emplace();
        m_log.emplace();
        m_service = std::make_unique<AudioCaptureService>();
    }

    void cleanup()
    {
        m_service.reset();
        m_log.reset();
        m_audio.reset();
    }
};

} // namespace talvenor::test
