// The pool of multicast channels: which group each one has and which task owns it.
#pragma once

#include "common/sem.h"

#include <cstdint>
#include <string>
#include <vector>

inline constexpr int kChannels = 200;
inline constexpr int kNoChannel = 65535;

/// One multicast channel.
struct tagPLAY_CHANNEL {
    uint16_t channelID; // 0..199, its place in the table
    int taskID;         // below 1: free
    std::string multicastIP;
};

/// Any thread may call anything.
class CChannelTable {
public:
    /// Gives the first free channel to a task. The first call builds the table, which stays as it is from then on.
    /// @param firstMulticastIP  group of channel 0; the others count up from it, octet by octet
    /// @param multicastIP       receives the channel's group
    /// @return                  the channel, kNoChannel when none is free or the ID is below 1
    int NewChannel(int taskID, const std::string& firstMulticastIP, std::string& multicastIP);
    /// Frees a channel; nothing for one that does not exist.
    void ReleaseChannel(int channelID);
    /// @return the first channel that the task owns, -1 when there is none
    int GetChannelID(int taskID) const;

private:
    void FillChannel(const std::string& firstMulticastIP) K740_REQUIRES(m_lock);

    mutable CQBSem m_lock;
    std::vector<tagPLAY_CHANNEL> m_channels K740_GUARDED_BY(m_lock);
};
