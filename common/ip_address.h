// IPv4 addresses as texts and numbers, and the device type that an ID implies.
#pragma once

#include <cstdint>
#include <string>

/// Tells whether a text may be the address of a device or of a network interface.
///
/// Only the first octet is looked at: it must not be 0, 127 or 224-239 and must be below 256.
/// Texts shorter than 6 characters are refused.
bool IsIPValid(const std::string& ip);

/// Tells whether a text may be a multicast group: at least 9 characters without the blanks around it, first octet
/// 224-239.
/// @return 0 when valid, -1 when not
int IsMulticastIPValid(const std::string& ip);

/// @return a.b.c.d as a << 24 | b << 16 | c << 8 | d; the parts are not range-checked; 0 with fewer than three dots
uint32_t ConvertIPToDWORD(const std::string& ip);

/// @return the dotted text of an address whose most significant byte is the first octet
std::string ConvertIPToString(uint32_t value);

/// @return the device type that the ID's range implies: 1 for 1-999, 2 for 5000-5999, 3 for 7000-7999, else -1
int GetDevTypeFromDevID(int id);
