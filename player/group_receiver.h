// Receiving the audio of a multicast group.
#pragma once

#include "common/udp.h"
#include "player/audio_decoder.h"

#include <string>

class CK740ControlApp;

inline constexpr int kNothingReceived = -1;
/// How long Receive waits. Its callers look between two waits whether they are still wanted.
inline constexpr int kReceiveSliceMs = 20;

/// Joins one group after the other and decodes what arrives there. Belongs to one thread.
class CGroupReceiver {
public:
    explicit CGroupReceiver(CK740ControlApp& app) : m_app(app) {}

    /// Leaves the former group and joins another, on the interface that the host has set. A failure is logged, but once
    /// only for a group that is tried again and again.
    /// @return false when it could not be joined; there is no group then
    bool Join(const std::string& group, int port);
    void Leave();
    /// @return the joined group, empty for none
    const std::string& Group() const { return m_group; }

    /// Waits for a datagram, at most kReceiveSliceMs, and decodes it.
    /// @return bytes of audio; 0 when it carries none; kEndOfStreamReceived; kNothingReceived
    int Receive();
    short* Audio() { return m_decoder.Audio(); }
    void ResetDecoder() { m_decoder.Reset(); }

private:
    CK740ControlApp& m_app;
    CQBUDP m_udp;
    std::string m_group;
    std::string m_failedGroup; // which could not be joined
    CAudioDecoder m_decoder;
};
