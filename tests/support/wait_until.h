// Waiting for what another thread or process does.
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

} // namespace k740::test
