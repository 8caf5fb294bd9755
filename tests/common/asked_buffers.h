// The socket buffers that were asked for: the system grants no more than the machine's limit, so what it grants shows
// little.
#pragma once

namespace k740::test {

/// @param option  SO_RCVBUF or SO_SNDBUF
/// @return        bytes last asked for with setsockopt(2), 0 for none
int AskedBuffer(int socket, int option);

} // namespace k740::test
