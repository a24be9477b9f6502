#pragma once

#include "platform/linux/audio/PulseConnection.h"
#include "platform/linux/audio/SoundMixer.h"

#include <QByteArray>

#include <map>
#include <memory>

namespace talvenor {

/// Listens to each application that plays, by one monitor stream for each of the server's sink inputs.
///
/// Left out are this process's own inputs, if asked for, and loopbacks, which carry sound that is heard
/// elsewhere already: the microphone sent to the speakers, or what another input plays. Everything here runs
/// with the loop's lock held.
class SinkInputMonitors
{
public:
    /// Both outlive this object.
    SinkInputMonitors(PulseConnection &connection, SoundMixer &mixer);
    ~SinkInputMonitors();
    SinkInputMonitors(const SinkInputMonitors &) = delete;
    SinkInputMonitors &operator=(const SinkInputMonitors &) = delete;

    /// Begins to listen, at `rate` frames per second, and keeps at it across the server's restarts.
    void start(int rate, bool excludesCurrentProcess);
    /// Lets go of everything. For good.
    void stop();

    /// What the connection's listener hears, passed on.
    void connectionReady();
    void connectionLost();
    void serverChanged(pa_subscription_event_type_t event, std::uint32_t index);

private:
    /// One sink input that is listened to.
    ///
    /// Each has a connection of its own: PipeWire's PulseAudio front (0.3.65) starves the third and every
    /// further recording stream of one client for seconds.
    struct Monitor
    {
        SinkInputMonitors *owner = nullptr;
        std::uint32_t index = 0;
        std::shared_ptr<PlayingInput> input;
        PulseContextPointer context;
        PulseStreamPointer stream;
        bool isHeard = false;  ///< samples have come over this stream
        int mutedAttempts = 0; ///< streams in a row over which none came
        bool isOver = false;   ///< the stream has ended, and the input waits to be attached again
        std::chrono::milliseconds backOff{0};
    };

    /// One sink input that is being asked about: first for itself, then for its client.
    struct Question
    {
        SinkInputMonitors *owner = nullptr;
        std::uint32_t index = 0;
        bool found = false;
        bool again = false; ///< it changed meanwhile
        std::uint32_t sink = PA_INVALID_INDEX;
        std::uint32_t client = PA_INVALID_INDEX;
        bool isLoopback = false;
        bool isOwn = false;
        bool namesProcess = false;
        PulseOperationPointer request;
    };

    void ask(std::uint32_t index);
    void inputTold(Question &question, const pa_sink_input_info *input, int endOfList);
    void clientTold(Question &question, const pa_client_info *client, int endOfList);
    void readProcess(Question &question, const pa_proplist *properties) const;
    void decide(Question &question);
    void attach(std::uint32_t index);
    void forget(std::uint32_t index);
    void contextChanged(Monitor &monitor);
    void openStream(Monitor &monitor);
    void streamChanged(Monitor &monitor);
    void attachLater(Monitor &monitor);
    void checkLater(const Monitor &monitor);
    void readStream(Monitor &monitor);

    PulseConnection &m_connection;
    SoundMixer &m_mixer;
    int m_rate = 0;
    bool m_wanted = false;
    bool m_excludesCurrentProcess = true;
    QByteArray m_processId;
    QByteArray m_processBinary;
    PulseOperationPointer m_subscription;
    PulseOperationPointer m_listing;
    std::map<std::uint32_t, Question> m_questions;
    std::map<std::uint32_t, Monitor> m_monitors;
    std::vector<float> m_mono;
};

} // namespace talvenor
