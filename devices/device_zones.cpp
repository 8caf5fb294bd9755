// The registry's view of zone strings.
#include "common/qbstring.h"
#include "devices/device.h"
#include "devices/zone_string.h"

std::string CDevice::GetAllZones() const {
    std::string zones;
    for (const tagDEVICE_INFO& device :
         Select([](const tagDEVICE_INFO& candidate) { return IsZoneControllerType(candidate.deviceType); })) {
        zones += EveryZoneOf(device.deviceID);
    }
    return zones;
}

int CDevice::IsZoneStringValid(std::string& zones) const {
    zones = qbstring::trimString(zones);
    if (zones == kEveryZone || zones == std::string(kEveryZone) + kZoneSeparator) { zones = GetAllZones(); }
    if (zones.empty() || zones.size() > kMaxZoneText) { return 0; }
    return AreZoneItemsValid(SplitZoneString(zones)) ? 1 : 0;
}

// Items that name unknown controllers are allowed beside one that names a known controller.
bool CDevice::AreZoneItemsValid(const std::vector<std::string>& items) const {
    bool controllerFound = false;
    for (const std::string& text : items) {
        if (text.size() != kZoneItemLength) { return false; }
        const ZoneItem item = ParseZoneItem(text);
        if (item.mask == 0) { return false; }
        controllerFound = controllerFound || IsZoneControllerType(GetDeviceType(item.deviceID));
    }
    return controllerFound;
}
