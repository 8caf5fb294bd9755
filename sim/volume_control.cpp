#include "sim/volume_control.h"

#include "sim/records.h"

#include <stdexcept>

namespace k740::sim {
namespace {

constexpr std::uint8_t kNoChannel = 255;  // in an answer
constexpr std::uint8_t kUnchanged = 255;  // in a request
constexpr std::uint8_t kLevelsFollow = 1; // first byte of an answer
constexpr std::size_t kLevelsV2 = 4;
constexpr std::size_t kLevelsV3 = 10;
constexpr std::size_t kChannelsV3 = 8; // that can be set, and that exist unless set otherwise
constexpr std::size_t kSetSizeV2 = 2;  // bytes of payload
constexpr std::size_t kSetSizeV3 = 11;
constexpr std::size_t kAnswerSizeV2 = 7;
constexpr std::size_t kAnswerSizeV3 = 12;

Bytes Echo(const Packet& request, std::size_t size) {
    return {request.payload.begin(), request.payload.begin() + static_cast<std::ptrdiff_t>(size)};
}

} // namespace

void VolumeControl::SetGeneration(Generation generation) {
    m_generation = generation;
    m_levels.assign(generation == Generation::V2 ? kLevelsV2 : kChannelsV3, 0);
    if (generation == Generation::V3) { m_levels.resize(kLevelsV3, kNoChannel); }
}

void VolumeControl::SetLevels(const std::vector<std::uint8_t>& levels) {
    if (levels.size() != m_levels.size()) { throw std::invalid_argument("wrong number of volume levels"); }
    m_levels = levels;
}

std::optional<VolumeControl::Answer> VolumeControl::Meet(const Packet& request) {
    switch (request.command) {
    case command::kSetVolumeV2:
        if (m_generation != Generation::V2) { break; }
        Set(request.payload[0], request.payload[1]);
        return Answer{command::kSetVolumeV2Answer, Echo(request, kSetSizeV2)};
    case command::kSetVolumeV3:
        if (m_generation != Generation::V3) { break; }
        for (std::size_t i = 0; i < kChannelsV3; ++i) { Set(i, request.payload[i]); }
        return Answer{command::kSetVolumeV3Answer, Echo(request, kSetSizeV3)};
    case command::kGetVolumeV2:
        if (m_generation != Generation::V2) { break; }
        return Answer{command::kGetVolumeV2Answer, LevelsPayload()};
    case command::kGetVolumeV3:
        if (m_generation != Generation::V3) { break; }
        return Answer{command::kGetVolumeV3Answer, LevelsPayload()};
    default:
        break;
    }
    return std::nullopt;
}

void VolumeControl::Set(std::size_t channel, std::uint8_t level) {
    const bool exists = channel < m_levels.size() && m_levels[channel] != kNoChannel;
    if (exists && level != kUnchanged) { m_levels[channel] = level; }
}

Bytes VolumeControl::LevelsPayload() const {
    const std::size_t size = m_generation == Generation::V2 ? kAnswerSizeV2 : kAnswerSizeV3;
    ByteWriter writer;
    writer.Put(kLevelsFollow).PutAll(m_levels).Fill(size - 1 - m_levels.size(), kMeaningless);
    return writer.Get();
}

} // namespace k740::sim
