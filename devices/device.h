// The device registry: every device that the host has registered.
#pragma once

#include "common/bounded_table.h"
#include "common/device_types.h"
#include "common/sem.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class CK740ControlApp;
class CQBTime;
class CQBUDP;

inline constexpr std::size_t kMaxDevices = 500;
inline constexpr std::size_t kMaxAddressText = 49; // characters kept of an address

/// One registered device. Copies share the socket, which is closed when the last of them is gone.
struct tagDEVICE_INFO {
    int deviceID;
    int deviceType;              // 0..10
    std::string ip;              // "127.0.0.1" for the devices that the library plays itself
    std::string pttMulticastIP;  // paging stations; empty until set
    std::shared_ptr<CQBUDP> udp; // unbound, aimed at ip, port 28001
};

/// Any thread may call anything; copies are handed out.
class CDevice {
public:
    using PTTSetters = CBoundedTable<int, kMaxDevices>;

    explicit CDevice(CK740ControlApp& app) : m_app(app) {}
    virtual ~CDevice() = default;

    /// Registers a device and announces it to its manager. Every rejection is logged.
    /// @return 0, or -1 with the table unchanged
    int AddDevice(int id, int type, const std::string& ip);
    /// @return 0; -1 when the ID is not registered
    int RemoveDevice(int id);

    /// @return "<ID>   <type> <IP>;" for every device; sorts the table itself by ID
    std::string GetDeviceList();
    /// @return empty when the ID is not registered
    std::string GetDeviceIP(int id) const;
    bool IsDeviceIDValid(int id) const;
    /// @return -1 when the ID is not registered
    int GetDeviceType(int id) const;
    /// @return the device's socket, shared, so that it outlives a removal; null when the ID is not registered
    std::shared_ptr<CQBUDP> GetDeviceUDP(int id) const;
    std::vector<tagDEVICE_INFO> GetAllDevices() const;
    /// @return every paging station
    std::vector<tagDEVICE_INFO> GetAllRPKDevices() const;

    /// @return the zone string that selects every zone of every zone controller, in table order
    std::string GetAllZones() const;
    /// Checks a zone string, drops the blanks around it and expands "FFFFFF".
    /// @return 1 valid, 0 not
    int IsZoneStringValid(std::string& zones) const;

    /// Stores the push-to-talk group of a device of whatever type; nothing for an unknown ID.
    void UpdateRPKMulticastIP(int id, const std::string& address);
    /// Moves a paging station to another push-to-talk group. Blocks for up to 3 s until the former one is left.
    /// @return 0; -1 no paging station; -2 no multicast address; -3 the former group was not left
    int SetRPKPTTMulticastIP(int id, const std::string& ip);
    /// @return empty for anything but a paging station
    std::string GetRPKPTTMulticastIP(int id) const;

private:
    bool CheckRanges(int id, int type, const std::string& ip);
    bool Insert(int id, int type, const std::string& ip);
    /// @return why the device cannot be added, empty when it can
    std::string FindObstacle(int id, const std::string& ip) const K740_REQUIRES(m_lock);
    void Announce(int id, int type);
    /// @return the type that the device had, nothing when the ID is not registered
    std::optional<int> Erase(int id);
    /// @return whether every item is well-formed and one names a registered zone controller
    bool AreZoneItemsValid(const std::vector<std::string>& items) const;
    /// Waits until a condition holds, as long as the change of a push-to-talk group may take in all.
    template <typename Condition> bool WaitForPTT(const CQBTime& waited, Condition condition);
    bool Reject(const std::string& reason);
    template <typename Devices> static auto FindIn(Devices& devices, int id) {
        return std::find_if(devices.begin(), devices.end(),
                            [id](const tagDEVICE_INFO& device) { return device.deviceID == id; });
    }
    /// @return read(device), or an empty result when the ID is not registered
    template <typename Read> auto Look(int id, Read read) const -> decltype(read(tagDEVICE_INFO{})) {
        const CQBSemLocker lock(&m_lock);
        const auto found = FindIn(m_devices, id);
        if (found == m_devices.end()) { return {}; }
        return read(*found);
    }
    /// @return copies of the devices that match, in table order
    template <typename Match> std::vector<tagDEVICE_INFO> Select(Match match) const {
        const CQBSemLocker lock(&m_lock);
        std::vector<tagDEVICE_INFO> selected;
        std::copy_if(m_devices.begin(), m_devices.end(), std::back_inserter(selected), match);
        return selected;
    }

    CK740ControlApp& m_app;
    PTTSetters m_pttSetters; // stations whose group is being changed, each by one caller
    mutable CQBSem m_lock;
    std::vector<tagDEVICE_INFO> m_devices K740_GUARDED_BY(m_lock);
};
