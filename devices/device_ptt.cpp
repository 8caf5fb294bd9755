// The push-to-talk groups of paging stations.
#include "app/application.h"
#include "common/ip_address.h"
#include "common/qbstring.h"
#include "common/stopwatch.h"
#include "devices/device.h"

namespace {
constexpr unsigned kPTTMonitorPollMs = 20;
constexpr unsigned kPTTMonitorTimeoutMs = 2999;

/// Takes a station out of the list of those whose group is being changed.
class CPTTSetterEnd {
public:
    CPTTSetterEnd(CDevice::PTTSetters& setters, int id) : m_setters(setters), m_id(id) {}
    ~CPTTSetterEnd() {
        m_setters.EraseIf([this](int known) { return known == m_id; });
    }
    CPTTSetterEnd(const CPTTSetterEnd&) = delete;
    CPTTSetterEnd& operator=(const CPTTSetterEnd&) = delete;

private:
    CDevice::PTTSetters& m_setters;
    const int m_id;
};

} // namespace

void CDevice::UpdateRPKMulticastIP(int id, const std::string& address) {
    const CQBSemLocker lock(&m_lock);
    const auto found = FindIn(m_devices, id);
    if (found != m_devices.end()) { found->pttMulticastIP = address.substr(0, kMaxAddressText); }
}

int CDevice::SetRPKPTTMulticastIP(int id, const std::string& ip) {
    if (GetDeviceType(id) != kDevicePagingStation) { return -1; }
    const std::string address = qbstring::trimString(ip);
    if (!address.empty() && IsMulticastIPValid(address) != 0) { return -2; }
    CQBTime waited;
    waited.TimeStart();
    // Callers that change the same station's group take turns; those of other stations do not wait for each other.
    const auto claim = [&] {
        return m_pttSetters.UpdateOrAppend([id](int known) { return known == id; }, [](int&) {}, id);
    };
    if (!WaitForPTT(waited, claim)) { return -3; }
    const CPTTSetterEnd end(m_pttSetters, id);
    UpdateRPKMulticastIP(id, "");
    if (!WaitForPTT(waited, [&] { return m_app.RPK().GetMonitorPTTFlag(id) == 0; })) { return -3; }
    UpdateRPKMulticastIP(id, address);
    if (!address.empty()) { m_app.RPK().StartMonitorPTT(id); }
    return 0;
}

template <typename Condition> bool CDevice::WaitForPTT(const CQBTime& waited, Condition condition) {
    while (!condition()) {
        m_app.Lifetime().Pause(kPTTMonitorPollMs);
        if (waited.TimeEnd() > kPTTMonitorTimeoutMs) { return false; }
    }
    return true;
}

std::string CDevice::GetRPKPTTMulticastIP(int id) const {
    return Look(id, [](const tagDEVICE_INFO& device) {
        return device.deviceType == kDevicePagingStation ? device.pttMulticastIP : std::string();
    });
}
