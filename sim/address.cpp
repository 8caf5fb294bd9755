#include "sim/address.h"

#include <arpa/inet.h>

#include <stdexcept>

namespace k740::sim {

std::string AddressText(std::uint32_t address) {
    std::string text = std::to_string(address >> 24);
    for (const int shift : {16, 8, 0}) {
        text += '.';
        text += std::to_string((address >> shift) & 0xFF);
    }
    return text;
}

std::uint32_t AddressNumber(const std::string& text) {
    if (text.empty()) { return 0; }
    in_addr address{};
    if (::inet_pton(AF_INET, text.c_str(), &address) != 1) { throw std::invalid_argument("no IPv4 address: " + text); }
    return ntohl(address.s_addr);
}

} // namespace k740::sim
