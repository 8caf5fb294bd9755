// Decoding and transcoding tables of ITU-T G.711, built at compile time for all 256 codes.
#pragma once

#include <array>
#include <cstddef>

namespace g711 {

/// Quantising level of mu-law magnitude -> of A-law magnitude, counted from 1 (G.711 table 3).
constexpr std::array<unsigned char, 128> kULawLevelToALaw{
    1,   1,   2,   2,   3,   3,   4,   4,   5,   5,   6,   6,   7,   7,   8,   8,   9,   10,  11,  12,  13,  14,
    15,  16,  17,  18,  19,  20,  21,  22,  23,  24,  25,  27,  29,  31,  33,  34,  35,  36,  37,  38,  39,  40,
    41,  42,  43,  44,  46,  48,  49,  50,  51,  52,  53,  54,  55,  56,  57,  58,  59,  60,  61,  62,  64,  65,
    66,  67,  68,  69,  70,  71,  72,  73,  74,  75,  76,  77,  78,  79,  80,  82,  83,  84,  85,  86,  87,  88,
    89,  90,  91,  92,  93,  94,  95,  96,  97,  98,  99,  100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110,
    111, 112, 113, 114, 115, 116, 117, 118, 119, 120, 121, 122, 123, 124, 125, 126, 127, 128};

/// Quantising level of A-law magnitude -> of mu-law magnitude, counted from 0 (G.711 table 4).
constexpr std::array<unsigned char, 128> kALawLevelToULaw{
    1,   3,   5,   7,   9,   11,  13,  15,  16,  17,  18,  19,  20,  21,  22,  23,  24,  25,  26,  27,  28,  29,
    30,  31,  32,  32,  33,  33,  34,  34,  35,  35,  36,  37,  38,  39,  40,  41,  42,  43,  44,  45,  46,  47,
    48,  48,  49,  49,  50,  51,  52,  53,  54,  55,  56,  57,  58,  59,  60,  61,  62,  63,  64,  64,  65,  66,
    67,  68,  69,  70,  71,  72,  73,  74,  75,  76,  77,  78,  79,  80,  80,  81,  82,  83,  84,  85,  86,  87,
    88,  89,  90,  91,  92,  93,  94,  95,  96,  97,  98,  99,  100, 101, 102, 103, 104, 105, 106, 107, 108, 109,
    110, 111, 112, 113, 114, 115, 116, 117, 118, 119, 120, 121, 122, 123, 124, 125, 126, 127};

template <typename Value, typename Of> constexpr std::array<Value, 256> TableOfCodes(Of of) {
    std::array<Value, 256> table{};
    for (int code = 0; code < 256; ++code) { table[static_cast<std::size_t>(code)] = static_cast<Value>(of(code)); }
    return table;
}

/// The seven magnitude bits of a code, their inversion undone.
constexpr int ALawMagnitude(int code) {
    return (code ^ 0x55) & 0x7F;
}
constexpr int ULawMagnitude(int code) {
    return (code ^ 0x7F) & 0x7F;
}
constexpr bool IsPositive(int code) {
    return (code & 0x80) != 0;
}

constexpr auto kALawSamples = TableOfCodes<short>([](int code) {
    const int segment = ALawMagnitude(code) >> 4;
    const int offset = (ALawMagnitude(code) & 0xF) << 4;
    const int magnitude = segment == 0 ? offset + 8 : (offset + 0x108) << (segment - 1);
    return IsPositive(code) ? magnitude : -magnitude;
});

constexpr auto kULawSamples = TableOfCodes<short>([](int code) {
    constexpr int kBias = 0x84;
    const int segment = ULawMagnitude(code) >> 4;
    const int offset = (ULawMagnitude(code) & 0xF) << 3;
    const int magnitude = ((offset + kBias) << segment) - kBias;
    return IsPositive(code) ? magnitude : -magnitude;
});

// Codes as 16-bit values: of these the compiler fills a vector register twice as fast as of bytes.
constexpr auto kALawToULaw = TableOfCodes<short>([](int code) {
    const int level = kALawLevelToULaw[static_cast<std::size_t>(ALawMagnitude(code))];
    return (code & 0x80) | (level ^ 0x7F);
});

constexpr auto kULawToALaw = TableOfCodes<short>([](int code) {
    const int level = kULawLevelToALaw[static_cast<std::size_t>(ULawMagnitude(code))] - 1;
    return (code & 0x80) | (level ^ 0x55);
});

} // namespace g711
