// What the library leaves in the process and in its network namespace.
#pragma once

#include "sim/file_descriptor.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace k740::test {

/// @return whether a socket that shares its port with nobody can have it on all interfaces
inline bool IsPortFree(std::uint16_t port) {
    const sim::FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    return ::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

inline std::ptrdiff_t CountDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// @return bytes of this process that are in memory (proc(5), statm)
inline long ResidentBytes() {
    long size = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

/// @return the directories below /proc/self/task of the threads of this name
inline std::vector<std::filesystem::path> ThreadsNamed(const std::string& name) {
    std::vector<std::filesystem::path> threads;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string text;
        std::ifstream(task.path() / "comm") >> text; // empty once the thread has ended
        if (text == name) { threads.push_back(task.path()); }
    }
    return threads;
}

/// @return how many times a thread has gone to sleep (proc(5), voluntary_ctxt_switches); -1 when it has ended
inline long CountSleeps(const std::filesystem::path& thread) {
    std::ifstream status(thread / "status");
    for (std::string word; status >> word;) {
        long count = 0;
        if (word == "voluntary_ctxt_switches:" && status >> count) { return count; }
    }
    return -1;
}

} // namespace k740::test
