#include "bench/udp_drops.h"

#include "common/format.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace k740::bench {

std::int64_t UdpDrops(int port) {
    const std::string suffix = Format(":%04X", static_cast<unsigned>(port));
    std::ifstream table("/proc/thread-self/net/udp");
    std::int64_t drops = 0;
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line);
        const std::vector<std::string> columns{std::istream_iterator<std::string>(words), {}};
        if (columns.size() > 2 && columns[1].ends_with(suffix)) { drops += std::stoll(columns.back()); }
    }
    return drops;
}

} // namespace k740::bench
