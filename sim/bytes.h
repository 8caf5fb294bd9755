// Little-endian integers in byte sequences, for building and reading what travels on the wire.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace k740::sim {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Reads an integer at an offset; bytes beyond the end read as zero.
template <std::integral Integer> Integer ReadAt(ByteView bytes, std::size_t offset) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Integer) && offset + i < bytes.size(); ++i) {
        value |= static_cast<std::uint64_t>(bytes[offset + i]) << (8 * i);
    }
    return static_cast<Integer>(value);
}

/// Appends integers, the lowest byte first.
class ByteWriter {
public:
    template <std::integral Integer> ByteWriter& Put(Integer value) {
        for (std::size_t i = 0; i < sizeof(Integer); ++i) {
            m_bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8 * i)));
        }
        return *this;
    }
    template <typename Range> ByteWriter& PutAll(const Range& values) {
        for (const auto value : values) { Put(value); }
        return *this;
    }
    /// Appends the same byte count times.
    ByteWriter& Fill(std::size_t count, std::uint8_t value) {
        for (std::size_t i = 0; i < count; ++i) { m_bytes.push_back(value); }
        return *this;
    }
    [[nodiscard]] const Bytes& Get() const { return m_bytes; }

private:
    Bytes m_bytes;
};

} // namespace k740::sim
