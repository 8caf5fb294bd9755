#include "common/ip_address.h"

#include "common/device_types.h"
#include "common/format.h"
#include "common/qbstring.h"

#include <cstdlib>

namespace {

constexpr std::size_t kShortestIP = 6;
constexpr std::size_t kShortestMulticastIP = 9;
constexpr int kLoopbackOctet = 127;
constexpr int kFirstMulticastOctet = 224;
constexpr int kLastMulticastOctet = 239;

int FirstOctet(const std::string& ip) {
    return std::atoi(ip.substr(0, 3).c_str());
}

bool IsMulticastOctet(int octet) {
    return octet >= kFirstMulticastOctet && octet <= kLastMulticastOctet;
}

} // namespace

bool IsIPValid(const std::string& ip) {
    if (ip.size() < kShortestIP) { return false; }
    const int octet = FirstOctet(ip);
    return octet != 0 && octet != kLoopbackOctet && !IsMulticastOctet(octet) && octet < 256;
}

int IsMulticastIPValid(const std::string& ip) {
    const std::string trimmed = qbstring::trimString(ip);
    return trimmed.size() >= kShortestMulticastIP && IsMulticastOctet(FirstOctet(trimmed)) ? 0 : -1;
}

uint32_t ConvertIPToDWORD(const std::string& ip) {
    uint32_t address = 0;
    std::size_t start = 0;
    for (int part = 0; part < 3; ++part) {
        const std::size_t dot = ip.find('.', start);
        if (dot == std::string::npos) { return 0; }
        address |= static_cast<uint32_t>(std::atoi(ip.substr(start, dot - start).c_str())) << (24 - 8 * part);
        start = dot + 1;
    }
    return address | static_cast<uint32_t>(std::atoi(ip.substr(start).c_str()));
}

std::string ConvertIPToString(uint32_t value) {
    return Format("%u.%u.%u.%u", value >> 24, value >> 16 & 0xFF, value >> 8 & 0xFF, value & 0xFF);
}

int GetDevTypeFromDevID(int id) {
    if (IsZoneControllerID(id)) { return kDeviceZoneController; }
    if (IsPagingStationID(id)) { return kDevicePagingStation; }
    if (IsAuxInterfaceID(id)) { return kDeviceAuxInterface; }
    return -1;
}
