#pragma once

#include "platform/linux/audio/PulseObjects.h"

#include <QByteArray>

#include <functional>
#include <optional>

namespace talvenor {

/// A source that is a microphone.
struct MicrophoneDevice
{
    QByteArray name;        ///< by which the server knows it
    QByteArray description; ///< for people
    std::uint32_t rate = 0; ///< its own, in frames per second
    std::uint8_t channels = 0;
};

/// Asks the server which microphone to take: the default source if it is one, else the best other.
///
/// A source that monitors a sink is none: it would record the speakers. Made, destroyed and answered with the
/// loop's lock held; destroying it ends the question. It must be gone before its connection.
class MicrophoneQuery
{
public:
    /// Gets the microphone, or nothing if there is none; may destroy the query. Loop thread.
    using Answer = std::function<void(std::optional<MicrophoneDevice>)>;

    MicrophoneQuery(pa_context *context, Answer answer);

    /// True once the answer was given, which on a broken connection happens during construction.
    [[nodiscard]] bool isDone() const { return !m_answer; }

private:
    void serverTold(const pa_server_info *server);
    void sourceTold(const pa_source_info *source);
    void finish();

    pa_context *m_context;
    Answer m_answer;
    QByteArray m_defaultName;
    std::optional<MicrophoneDevice> m_best;
    int m_bestRank = 0;
    PulseOperationPointer m_request; ///< the last member: it ends before what its callback uses
};

} // namespace talvenor
