// Fingerprints of long outputs, so that tests can state them in one line.
#pragma once

#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace k740::test {

/// @return the first 16 hexadecimal digits of the SHA-256 of the bytes
inline std::string Sha256Prefix(std::span<const std::byte> bytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1) { return "error"; }
    constexpr const char* kDigits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < 8; ++i) {
        text += kDigits[digest[i] >> 4];
        text += kDigits[digest[i] & 0xF];
    }
    return text;
}

/// The same of the elements in memory order, which is little-endian here as on the wire.
template <typename Element> std::string Sha256Prefix(const std::vector<Element>& elements) {
    return Sha256Prefix(std::as_bytes(std::span(elements)));
}

} // namespace k740::test
