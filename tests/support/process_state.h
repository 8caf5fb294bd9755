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

} // namespace k740::test
