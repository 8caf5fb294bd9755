#include "tests/common/asked_buffers.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <utility>

namespace {
std::map<std::pair<int, int>, int> g_asked; // by socket and option
} // namespace

// Stands before the C library's function of this name in this executable.
extern "C" int setsockopt(int socket, int level, int option, const void* value, socklen_t size) noexcept {
    if (level == SOL_SOCKET && (option == SO_RCVBUF || option == SO_SNDBUF)) {
        std::memcpy(&g_asked[{socket, option}], value, sizeof(int));
    }
    return static_cast<int>(syscall(SYS_setsockopt, socket, level, option, value, size));
}

namespace k740::test {

int AskedBuffer(int socket, int option) {
    return g_asked[{socket, option}];
}

} // namespace k740::test
