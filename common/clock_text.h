// Dates and times as texts, in local time.
#pragma once

#include <string>

inline constexpr int kDateAndMilliseconds = 0;
inline constexpr int kDateOnly = 3;

/// @param mode  kDateAndMilliseconds: "2026-11-15 19:39:09.123"; kDateOnly: "2026-11-15"
/// @return      the current local time; empty for any other mode
std::string GetNowString(int mode);

/// @param t  seconds since 1970 (time(2))
/// @return   "2026-11-15 19:39:09" in local time; empty when the year cannot be represented
std::string TimeToString(long t);
