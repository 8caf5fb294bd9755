#include "bench/process_use.h"

#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>

namespace k740::bench {

CLibraryCpu::ByThread CLibraryCpu::Now() {
    ByThread used;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::ifstream(thread.path() / "comm") >> name;
        std::int64_t onCpu = 0;
        if (name.starts_with("k740-") && std::ifstream(thread.path() / "schedstat") >> onCpu) {
            used[thread.path().filename().string()] = onCpu;
        }
    }
    return used;
}

std::int64_t CLibraryCpu::Used() const {
    std::int64_t total = 0;
    for (const auto& [thread, onCpu] : Now()) {
        const auto before = m_start.find(thread);
        total += before == m_start.end() ? onCpu : onCpu - before->second;
    }
    return total;
}

std::int64_t ThisThreadCpuNs() {
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return used.tv_sec * 1'000'000'000LL + used.tv_nsec;
}

double ResidentMegabytes() {
    long whole = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> whole >> resident;
    return static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / 1e6;
}

} // namespace k740::bench
