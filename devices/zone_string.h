// Zone strings: items of four hexadecimal digits of a zone controller's ID and two of a zone mask, separated by ";".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

inline constexpr const char* kZoneSeparator = ";";
inline constexpr const char* kEveryZone = "FFFFFF";
inline constexpr std::size_t kZoneItemLength = 6;
inline constexpr std::size_t kMaxZoneText = 102'400; // characters of a zone string
inline constexpr uint32_t kEveryZoneMask = 255;      // the largest zone mask

/// The two numbers of an item as they are written, unchecked: signs and "0x" are read too, so both may be anything.
struct ZoneItem {
    int32_t deviceID;
    uint32_t mask; // bit 0 = zone 1
};

/// @return the items between the separators; a final separator adds none
std::vector<std::string> SplitZoneString(const std::string& zones);

/// @param item  an item of any length; missing digits read as 0
ZoneItem ParseZoneItem(const std::string& item);

/// @return the item that selects every zone of a controller, separator included
std::string EveryZoneOf(int deviceID);
