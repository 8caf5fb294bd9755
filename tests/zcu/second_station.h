// What a test and the second station that it starts have agreed on.
#pragma once

#include "sim/tone.h"

#include <cstdint>
#include <vector>

namespace k740::test {

inline constexpr int kSecondNode = 9600;
inline constexpr const char* kSecondStationIP = "192.168.1.77";
inline constexpr int kSharedController = 900; // virtual, of the first station
inline constexpr int kSharedTask = 1001;
inline constexpr int kWorking = 4;                  // its status
inline constexpr const char* kMayPlay = "may-play"; // a file that says that the first station listens

/// What the second station broadcasts, 44.1 kHz.
inline std::vector<std::int16_t> SharedAudio() {
    return sim::Tone(440, 44'100);
}

} // namespace k740::test
