// The multicast groups in which this thread's network namespace is a member.
#pragma once

#include "tests/support/sdk_log.h"

#include <arpa/inet.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <sstream>
#include <string>

namespace k740::test {

/// @return how many sockets hold a membership, the one that every interface has of itself included
inline std::size_t CountMemberships(const std::string& group = "") {
    std::array<char, 9> shown{}; // the address in network order, printed as a number
    std::snprintf(shown.data(), shown.size(), "%08X", group.empty() ? 0U : inet_addr(group.c_str()));
    std::istringstream lines(ReadTextFile("/proc/thread-self/net/igmp"));
    std::size_t total = 0;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string address;
        std::size_t users = 0;
        const bool isGroup = line.starts_with("\t\t\t") && words >> address >> users;
        if (isGroup && (group.empty() || address == shown.data())) { total += users; }
    }
    return total;
}

} // namespace k740::test
