#include "player/channel_table.h"

#include "common/ip_address.h"

#include <algorithm>

namespace {
constexpr int kFree = -1;
constexpr std::size_t kMaxGroupText = 40;
} // namespace

void CChannelTable::FillChannel(const std::string& firstMulticastIP) {
    if (!m_channels.empty()) { return; }
    const uint32_t first = ConvertIPToDWORD(firstMulticastIP);
    for (uint16_t i = 0; i < kChannels; ++i) {
        m_channels.push_back({i, kFree, ConvertIPToString(first + i).substr(0, kMaxGroupText)});
    }
}

int CChannelTable::NewChannel(int taskID, const std::string& firstMulticastIP, std::string& multicastIP) {
    if (taskID < 1) { return kNoChannel; }
    const CQBSemLocker lock(&m_lock);
    FillChannel(firstMulticastIP);
    const auto free = std::find_if(m_channels.begin(), m_channels.end(),
                                   [](const tagPLAY_CHANNEL& channel) { return channel.taskID < 1; });
    if (free == m_channels.end()) { return kNoChannel; }
    free->taskID = taskID;
    multicastIP = free->multicastIP;
    return free->channelID;
}

void CChannelTable::ReleaseChannel(int channelID) {
    const CQBSemLocker lock(&m_lock);
    if (channelID < 0 || static_cast<std::size_t>(channelID) >= m_channels.size()) { return; }
    m_channels[static_cast<std::size_t>(channelID)].taskID = kFree;
}

int CChannelTable::GetChannelID(int taskID) const {
    if (taskID < 0) { return -1; }
    const CQBSemLocker lock(&m_lock);
    const auto owned = std::find_if(m_channels.begin(), m_channels.end(),
                                    [taskID](const tagPLAY_CHANNEL& channel) { return channel.taskID == taskID; });
    return owned == m_channels.end() ? -1 : owned->channelID;
}
