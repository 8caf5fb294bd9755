// The version under which the library names itself, in its log and to devices.
#pragma once

inline constexpr const char* kSDKVersion = "1.0.4";
