// What the process uses: CPU of the library's own threads, and memory.
#pragma once

#include <cstdint>

namespace k740::bench {

/// @return nanoseconds of CPU that the threads of this process whose names begin with "k740-" have used so far
std::int64_t LibraryCpuNs();

/// @return nanoseconds of CPU that the calling thread has used so far
std::int64_t ThisThreadCpuNs();

/// @return resident memory of the process in MB
double ResidentMegabytes();

} // namespace k740::bench
