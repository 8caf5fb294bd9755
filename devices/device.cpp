#include "devices/device.h"

#include "app/application.h"
#include "common/format.h"
#include "common/ip_address.h"
#include "common/udp.h"
#include "protocol/commands.h"

#include <algorithm>

namespace {

constexpr const char* kOwnAddress = "127.0.0.1";

bool IsPlayedByLibrary(int type) {
    return type == kDeviceVirtualZoneController || type == kDeviceVirtualPagingStation;
}

/// @return what is wrong with the ID, null when it lies in the range of its type
const char* FindRangeError(int id, int type) {
    if (type == kDevicePagingStation || type == kDeviceVirtualPagingStation) {
        return IsPagingStationID(id) ? nullptr : "Device ID is outoff range 5000~5999.";
    }
    if (type == kDeviceAuxInterface) { return IsAuxInterfaceID(id) ? nullptr : "Device ID is outoff range 7000~7999."; }
    if (IsZoneControllerType(type)) { return IsZoneControllerID(id) ? nullptr : "Device ID is outoff range 1~999."; }
    return nullptr;
}

tagDEVICE_INFO MakeDevice(int id, int type, const std::string& ip) {
    const std::string address = IsPlayedByLibrary(type) ? kOwnAddress : ip.substr(0, kMaxAddressText);
    auto udp = std::make_shared<CQBUDP>();
    udp->set_udp_host(address.c_str(), kRequestPort);
    return {id, type, address, "", std::move(udp)};
}

} // namespace

int CDevice::AddDevice(int id, int type, const std::string& ip) {
    m_app.Log().PushLog("", kLogInfo, Format("K740_AddDevice(%d, %d, '%s')", id, type, ip.c_str()));
    if (!CheckRanges(id, type, ip) || !Insert(id, type, ip)) { return -1; }
    Announce(id, type);
    return 0;
}

bool CDevice::CheckRanges(int id, int type, const std::string& ip) {
    if (type < 0 || type > kLastDeviceType) { return Reject("Device type is error."); }
    if (const char* error = FindRangeError(id, type)) { return Reject(error); }
    if (!IsPlayedByLibrary(type) && !IsIPValid(ip)) { return Reject("Device IP is error."); }
    return true;
}

bool CDevice::Insert(int id, int type, const std::string& ip) {
    std::string reason;
    {
        const CQBSemLocker lock(&m_lock);
        reason = FindObstacle(id, ip);
        if (reason.empty()) { m_devices.push_back(MakeDevice(id, type, ip)); }
    }
    return reason.empty() || Reject(reason);
}

// Which clash is reported depends on the order of the table, so both are looked for entry by entry. The address is
// compared as it was given: several devices played by the library may share its own.
std::string CDevice::FindObstacle(int id, const std::string& ip) const {
    if (m_devices.size() >= kMaxDevices) { return Format("Device qty. is up to %zu", kMaxDevices); }
    for (const tagDEVICE_INFO& device : m_devices) {
        if (device.deviceID == id) { return "Device ID is already exists."; }
        if (!ip.empty() && device.ip == ip) { return "Device IP is already exists."; }
    }
    return {};
}

bool CDevice::Reject(const std::string& reason) {
    m_app.Log().PushLog("", kLogError, reason);
    return false;
}

void CDevice::Announce(int id, int type) {
    if (IsZoneControllerID(id)) {
        m_app.ZCU().OffLine_ZCU(id);
        m_app.ZCU().SendHeartBeat(id);
    } else if (IsPagingStationID(id) && type == kDevicePagingStation) {
        m_app.RPK().OffLine_RPK(id);
        m_app.ZCU().SendHeartBeat(id);
    }
}

int CDevice::RemoveDevice(int id) {
    const std::optional<int> type = Erase(id);
    if (!type) { return -1; }
    if (IsZoneControllerType(*type)) { m_app.ZCU().RemoveController(id); }
    if (type == kDevicePagingStation) { m_app.RPK().RemoveMonitorZone(id); }
    if (type == kDeviceVirtualPagingStation) { m_app.Talker().AbandonCall(id); }
    m_app.Log().PushLog("", kLogInfo, Format("K740_RemoveDevice(%d)", id));
    return 0;
}

std::optional<int> CDevice::Erase(int id) {
    const CQBSemLocker lock(&m_lock);
    const auto found = FindIn(m_devices, id);
    if (found == m_devices.end()) { return std::nullopt; }
    const int type = found->deviceType;
    m_devices.erase(found);
    return type;
}

std::string CDevice::GetDeviceList() {
    const CQBSemLocker lock(&m_lock);
    std::sort(m_devices.begin(), m_devices.end(),
              [](const tagDEVICE_INFO& a, const tagDEVICE_INFO& b) { return a.deviceID < b.deviceID; });
    std::string list;
    for (const tagDEVICE_INFO& device : m_devices) {
        list += Format("%d   %d %s;", device.deviceID, device.deviceType, device.ip.c_str());
    }
    return list;
}

std::string CDevice::GetDeviceIP(int id) const {
    return Look(id, [](const tagDEVICE_INFO& device) { return device.ip; });
}

bool CDevice::IsDeviceIDValid(int id) const {
    return Look(id, [](const tagDEVICE_INFO&) { return true; });
}

int CDevice::GetDeviceType(int id) const {
    return Look(id, [](const tagDEVICE_INFO& device) { return std::optional(device.deviceType); }).value_or(-1);
}

std::shared_ptr<CQBUDP> CDevice::GetDeviceUDP(int id) const {
    return Look(id, [](const tagDEVICE_INFO& device) { return device.udp; });
}

std::vector<tagDEVICE_INFO> CDevice::GetAllDevices() const {
    return Select([](const tagDEVICE_INFO&) { return true; });
}

std::vector<tagDEVICE_INFO> CDevice::GetAllRPKDevices() const {
    return Select([](const tagDEVICE_INFO& device) { return device.deviceType == kDevicePagingStation; });
}
