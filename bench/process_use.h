// What the process uses: CPU of the library's own threads, and memory.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace k740::bench {

/// Measures the CPU that the threads of this process whose names begin with "k740-" use. What a thread that ends
/// meanwhile has used is not counted.
class CLibraryCpu {
public:
    /// @return nanoseconds since this object was made
    std::int64_t Used() const;

private:
    using ByThread = std::map<std::string, std::int64_t>; // nanoseconds so far by the thread's number

    static ByThread Now();

    const ByThread m_start = Now();
};

/// @return nanoseconds of CPU that the calling thread has used so far
std::int64_t ThisThreadCpuNs();

/// @return resident memory of the process in MB
double ResidentMegabytes();

} // namespace k740::bench
