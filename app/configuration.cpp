#include "app/configuration.h"

namespace {

constexpr int kDefaultNodeID = 9500;
constexpr int kDefaultStreamParameter = 0;
constexpr int kDefaultAudioStreamFormat = 0;
constexpr int kDefaultMaxRunningTasks = 200;
constexpr int kDefaultMulticastPort = 28100;
constexpr const char* kDefaultFirstMulticastIP = "225.0.0.1";

} // namespace

void CConfiguration::SetDefaults() {
    m_nodeID = kDefaultNodeID;
    m_streamParameter = kDefaultStreamParameter;
    m_audioStreamFormat = kDefaultAudioStreamFormat;
    m_maxRunningTasks = kDefaultMaxRunningTasks;
    m_multicastPort = kDefaultMulticastPort;
    SetFirstMulticastIP(kDefaultFirstMulticastIP);
    SetNIC("");
}

std::string CConfiguration::FirstMulticastIP() const {
    const CQBSemLocker lock(&m_lock);
    return m_firstMulticastIP;
}

void CConfiguration::SetFirstMulticastIP(const std::string& address) {
    const CQBSemLocker lock(&m_lock);
    m_firstMulticastIP = address;
}

std::string CConfiguration::NIC() const {
    const CQBSemLocker lock(&m_lock);
    return m_nic;
}

void CConfiguration::SetNIC(const std::string& address) {
    const CQBSemLocker lock(&m_lock);
    m_nic = address;
}
