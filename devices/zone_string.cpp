#include "devices/zone_string.h"

#include "common/format.h"
#include "common/qbstring.h"

namespace {
constexpr std::size_t kIDLength = 4;
constexpr std::size_t kMaskLength = 2;
} // namespace

std::vector<std::string> SplitZoneString(const std::string& zones) {
    std::vector<std::string> items;
    qbstring::SplitStringToVector(zones, kZoneSeparator, items);
    return items;
}

ZoneItem ParseZoneItem(const std::string& item) {
    const std::string mask = item.size() > kIDLength ? item.substr(kIDLength, kMaskLength) : "";
    return {static_cast<int32_t>(HSTR2DWORD(item.substr(0, kIDLength))), HSTR2DWORD(mask)};
}

std::string EveryZoneOf(int deviceID) {
    return Format("%04XFF;", static_cast<unsigned>(deviceID));
}
