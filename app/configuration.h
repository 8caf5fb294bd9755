// The settings that the host makes.
#pragma once

#include "common/sem.h"

#include <atomic>
#include <cstdint>
#include <string>

/// Any thread may read and set. A task that starts while a setting changes may or may not see the change.
class CConfiguration {
public:
    /// Sets every setting to its default.
    void SetDefaults();

    /// The library's own device ID, source of every command that it sends.
    uint32_t NodeID() const { return static_cast<uint32_t>(m_nodeID.load()); }
    void SetNodeID(int nodeID) { m_nodeID = nodeID; }

    /// Codec of the multicast audio, handed to its sender as it is.
    int StreamParameter() const { return m_streamParameter; }

    /// Format of the audio that the host pushes: the player knows 0..4, the host can set 0 and 1.
    int AudioStreamFormat() const { return m_audioStreamFormat; }
    void SetAudioStreamFormat(int format) { m_audioStreamFormat = format; }

    int MaxRunningTasks() const { return m_maxRunningTasks; }
    int MulticastPort() const { return m_multicastPort; }

    /// First group of the range that tasks use.
    std::string FirstMulticastIP() const;
    void SetFirstMulticastIP(const std::string& address);

    /// Address of the interface for multicast; empty for the system's choice.
    std::string NIC() const;
    void SetNIC(const std::string& address);

private:
    std::atomic<int> m_nodeID{0};
    std::atomic<int> m_streamParameter{0};
    std::atomic<int> m_audioStreamFormat{0};
    std::atomic<int> m_maxRunningTasks{0};
    std::atomic<int> m_multicastPort{0};
    mutable CQBSem m_lock;
    std::string m_firstMulticastIP K740_GUARDED_BY(m_lock);
    std::string m_nic K740_GUARDED_BY(m_lock);
};
