// The UDP sockets of this thread's network namespace: who listens, and what has not been read yet.
#pragma once

#include "sim/address.h"
#include "sim/wire.h"
#include "tests/support/wait_until.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace k740::test {

/// @return the bytes that wait in each socket that is bound to the address (proc(5), /proc/net/udp)
inline std::vector<unsigned long> WaitingBytes(const std::string& ip, std::uint16_t port) {
    char address[16];
    std::snprintf(address, sizeof(address), "%08X:%04X", unsigned(htonl(sim::AddressNumber(ip))), unsigned(port));
    std::ifstream file("/proc/thread-self/net/udp");
    std::vector<unsigned long> waiting;
    for (std::string line; std::getline(file, line);) {
        std::string slot;
        std::string local;
        std::string remote;
        std::string state;
        std::string queues; // sent:received, hexadecimal
        std::istringstream(line) >> slot >> local >> remote >> state >> queues;
        if (local == address) { waiting.push_back(std::stoul(queues.substr(queues.find(':') + 1), nullptr, 16)); }
    }
    return waiting;
}

/// @return whether bytes wait in a socket of the group
inline bool IsAnythingWaiting(const std::string& group) {
    const auto waiting = WaitingBytes(group, sim::kAudioPort);
    return std::any_of(waiting.begin(), waiting.end(), [](unsigned long bytes) { return bytes > 0; });
}

/// Blocks until everything that was sent to the group has been read. What was sent before the last datagram has then
/// been handled. @return whether that came in time
inline bool WaitUntilRead(const std::string& group) {
    return WaitUntil([&] { return !IsAnythingWaiting(group); });
}

/// Blocks until the library listens on all its ports; on a busy machine that may be after its initialisation, and an
/// answer that comes before is lost.
inline bool WaitUntilListening() {
    const auto isBound = [](std::uint16_t port) { return !WaitingBytes("0.0.0.0", port).empty(); };
    return WaitUntil(
        [&] { return isBound(sim::kRequestPort) && isBound(sim::kReplyPort) && isBound(sim::kIntercomAudioPort); });
}

} // namespace k740::test
