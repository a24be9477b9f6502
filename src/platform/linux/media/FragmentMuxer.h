#pragma once

#include "platform/linux/media/LibavPointers.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace talvenor {

/// Turns AAC packets into the bytes of a fragmented MPEG-4 file, in memory. One thread at a time.
///
/// Each fragment of a second is complete in itself, so that a file which ends after any of them plays to its
/// end. The first one is cut at the first packet: with it the file is a playable one.
class FragmentMuxer
{
public:
    /// Throws PlatformError.
    explicit FragmentMuxer(const AVCodecContext &encoder);
    FragmentMuxer(const FragmentMuxer &) = delete;
    FragmentMuxer &operator=(const FragmentMuxer &) = delete;

    /// Takes the packet's data. Throws PlatformError.
    void add(AVPacket &packet);

    /// Cuts the last fragment. Throws PlatformError.
    void finish();

    /// The whole fragments that have not been taken yet, oldest first; whoever writes one to a file removes
    /// it. The head of the file belongs to the first.
    [[nodiscard]] std::deque<std::vector<std::uint8_t>> &fragments() { return m_fragments; }

private:
    static int append(void *self, std::uint8_t *data, int size);
    void cut();
    void takeFragment();

    std::vector<std::uint8_t> m_output; ///< what the muxer gave since the last whole fragment
    std::deque<std::vector<std::uint8_t>> m_fragments;
    AVIOContextPointer m_io;
    AVOutputPointer m_muxer;
    AVRational m_packetTimeBase;
    std::int64_t m_fragmentLength = 0; ///< of a whole fragment, in packet time
    std::int64_t m_fragmentStart = 0;  ///< of the fragment under way, in packet time
    bool m_fragmentHasPackets = false;
    bool m_isFirstFragment = true;
};

} // namespace talvenor
