#include "demo/wav_file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

constexpr std::size_t kRiffHeaderBytes = 12;
constexpr std::size_t kChunkHeaderBytes = 8;
constexpr std::size_t kFormatBytes = 16;
constexpr uint16_t kPcm = 1;
constexpr uint16_t kMono = 1;
constexpr uint32_t kRate = 44'100;
constexpr uint16_t kBits = 16;

template <typename Value> Value At(const std::vector<unsigned char>& file, std::size_t offset) {
    Value value{};
    if (offset + sizeof(value) > file.size()) { throw std::runtime_error("the WAV file is cut short"); }
    std::memcpy(&value, file.data() + offset, sizeof(value));
    return value;
}

bool IsNamed(const std::vector<unsigned char>& file, std::size_t offset, const char* name) {
    return offset + 4 <= file.size() && std::memcmp(file.data() + offset, name, 4) == 0;
}

void CheckFormat(const std::vector<unsigned char>& file, std::size_t body) {
    const bool expected = At<uint16_t>(file, body) == kPcm && At<uint16_t>(file, body + 2) == kMono &&
                          At<uint32_t>(file, body + 4) == kRate && At<uint16_t>(file, body + 14) == kBits;
    if (!expected) { throw std::runtime_error("the WAV file is not 44.1 kHz 16-bit mono PCM"); }
}

} // namespace

std::vector<unsigned char> ReadPcm(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) { throw std::runtime_error("cannot open " + path); }
    const std::vector<unsigned char> file{std::istreambuf_iterator<char>(stream), {}};
    if (!IsNamed(file, 0, "RIFF") || !IsNamed(file, 8, "WAVE")) { throw std::runtime_error(path + " is no WAV file"); }

    bool formatSeen = false;
    for (std::size_t chunk = kRiffHeaderBytes; chunk + kChunkHeaderBytes <= file.size();) {
        const std::size_t body = chunk + kChunkHeaderBytes;
        const std::size_t length = At<uint32_t>(file, chunk + 4);
        if (IsNamed(file, chunk, "fmt ") && length >= kFormatBytes) {
            CheckFormat(file, body);
            formatSeen = true;
        }
        if (IsNamed(file, chunk, "data") && formatSeen) {
            const std::size_t end = std::min(body + length, file.size());
            return {file.begin() + static_cast<std::ptrdiff_t>(body), file.begin() + static_cast<std::ptrdiff_t>(end)};
        }
        chunk = body + length + length % 2;
    }
    throw std::runtime_error(path + " holds no audio");
}
