// Waiting for what another thread or process does, and for how long it takes.
#pragma once

#include <chrono>
#include <thread>

namespace k740::test {

inline constexpr std::chrono::milliseconds kPatience{10'000}; // far beyond what is expected

/// Looks every millisecond whether the condition holds.
/// @return whether it came to hold in time
template <typename Condition> bool WaitUntil(Condition condition, std::chrono::milliseconds patience = kPatience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) { return false; }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// For time limits, which a busy machine can miss, but not meet by chance: runs a round until one meets them.
/// @return whether one of ten did
template <typename Round> bool HoldsOnce(Round round) {
    for (int i = 0; i < 10; ++i) {
        if (round()) { return true; }
    }
    return false;
}

} // namespace k740::test
