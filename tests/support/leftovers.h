// What receivers of multicast audio could leave behind: threads, descriptors, group memberships.
#pragma once

#include "sim/address.h"
#include "tests/support/process_state.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <ostream>
#include <sstream>
#include <string>

namespace k740::test {

/// @param stat  of a thread (proc(5)); one that has been joined may be on its way out still
inline bool IsAlive(const std::filesystem::path& stat) {
    constexpr unsigned kExiting = 4;
    std::ifstream file(stat);
    std::string text;
    std::getline(file, text);
    std::istringstream fields(text.substr(text.rfind(')') + 1)); // what is before holds the thread's name
    std::string ignored;                                         // state and five numbers
    unsigned flags = 0;
    for (int field = 0; field < 6; ++field) { fields >> ignored; }
    return fields >> flags && (flags & kExiting) == 0;
}

inline std::ptrdiff_t CountThreads() {
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return std::count_if(begin(threads), end(threads),
                         [](const auto& thread) { return IsAlive(thread.path() / "stat"); });
}

/// Sockets of this thread's network namespace in each multicast group (proc(5), /proc/net/igmp).
inline std::map<std::string, int> GroupMembers() {
    std::ifstream file("/proc/thread-self/net/igmp");
    std::map<std::string, int> members;
    for (std::string line; std::getline(file, line);) {
        std::uint32_t group = 0; // hexadecimal, its first octet in the lowest byte
        int users = 0;
        std::istringstream fields(line);
        if (line.starts_with('\t') && fields >> std::hex >> group >> std::dec >> users) {
            members[sim::AddressText(ntohl(group))] += users;
        }
    }
    return members;
}

inline int MembersOf(const std::string& group) {
    const auto members = GroupMembers();
    const auto found = members.find(group);
    return found == members.end() ? 0 : found->second;
}

/// In all groups, the membership included that every interface has of itself.
inline int CountMembers() {
    int total = 0;
    for (const auto& [group, users] : GroupMembers()) { total += users; }
    return total;
}

struct Leftovers {
    std::ptrdiff_t threads = CountThreads();
    std::ptrdiff_t descriptors = CountDescriptors();
    std::map<std::string, int> members = GroupMembers();

    bool operator==(const Leftovers&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Leftovers& left) {
    out << left.threads << " threads, " << left.descriptors << " descriptors, groups:";
    for (const auto& [group, users] : left.members) { out << ' ' << group << " (" << users << ')'; }
    return out;
}

} // namespace k740::test
