#include "sim/receive_buffer.h"

#include "sim/system_error.h"

#include <sys/socket.h>

namespace k740::sim {

void GrowReceiveBuffer(int socket, int bytes) {
    if (::setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes) == 0) { return; }
    Checked(::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes), "SO_RCVBUF");
}

} // namespace k740::sim
