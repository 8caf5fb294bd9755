#include "sim/query_records.h"

#include "sim/records.h"

namespace k740::sim {
namespace {

constexpr std::size_t kKernelOffset = 24;
constexpr std::size_t kApplicationOffset = 36;
constexpr std::size_t kMcuOffset = 84;
constexpr std::size_t kTextsEnd = 112;
constexpr std::size_t kVersionSize = 118; // bytes

/// Writes a text from one offset to another, filled up with zeros, one at least.
void PutText(ByteWriter& writer, const std::string& text, std::size_t from, std::size_t to) {
    const std::string shown = text.substr(0, to - from - 1);
    writer.PutAll(shown).Fill(to - from - shown.size(), 0);
}

} // namespace

Bytes Payload(const Version& version) {
    ByteWriter writer;
    writer.Fill(kKernelOffset, kMeaningless);
    PutText(writer, version.kernel, kKernelOffset, kApplicationOffset);
    PutText(writer, version.application, kApplicationOffset, kMcuOffset);
    PutText(writer, version.mcu, kMcuOffset, kTextsEnd);
    return writer.Fill(kVersionSize - kTextsEnd, kMeaningless).Get();
}

std::uint16_t ReadEmergencyPriority(const Packet& packet) {
    return ReadAt<std::uint16_t>(packet.payload, 4);
}

} // namespace k740::sim
