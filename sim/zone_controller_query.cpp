// What a zone controller answers beside play requests: volumes and the groups of its zones, which it streams to.
#include "sim/zone_controller.h"

#include <stdexcept>

namespace k740::sim {
namespace {

constexpr const char* kNoGroup = "0.0.0.0";

} // namespace

void ZoneController::AnswerQuery(const Packet& packet, const Endpoint& requester) {
    if (packet.command == command::kGetZoneGroups) {
        Answer(packet, requester, command::kZoneGroupsAnswer, m_zoneGroups.Payload());
    } else if (const auto answer = m_volumes.Meet(packet)) {
        Answer(packet, requester, answer->command, answer->payload);
    } // else it is noted in the journal already
}

void ZoneController::SetGeneration(Generation generation) {
    OnReactor().Run([&] { m_volumes.SetGeneration(generation); });
}

void ZoneController::SetVolumes(const std::vector<std::uint8_t>& levels) {
    OnReactor().Run([&] { m_volumes.SetLevels(levels); });
}

std::vector<std::uint8_t> ZoneController::Volumes() const {
    std::vector<std::uint8_t> levels;
    OnReactor().Run([&] { levels = m_volumes.Levels(); });
    return levels;
}

std::optional<std::uint16_t> ZoneController::EmergencyPriority() const {
    std::optional<std::uint16_t> priority;
    OnReactor().Run([&] { priority = m_emergencyPriority; });
    return priority;
}

void ZoneController::SetZoneGroup(int zone, const std::string& group, std::uint32_t word) {
    OnReactor().Run([&] { m_zoneGroups.Set(zone, group, word); });
}

void ZoneController::SetZoneGroupLayout(ZoneGroupLayout layout) {
    OnReactor().Run([&] { m_zoneGroups.SetLayout(layout); });
}

AudioSource& ZoneController::StreamZone(int zone, const AudioStream& stream, std::uint16_t port) {
    AudioSource* source = nullptr;
    OnReactor().Run([&] {
        const std::string group = m_zoneGroups.GroupOf(zone);
        if (group == kNoGroup) { throw std::invalid_argument("zone without a group: " + std::to_string(zone)); }
        source = &m_zoneSources.try_emplace(zone, OnReactor(), Socket(), Id()).first->second;
        source->Start({group, port}, stream);
    });
    return *source;
}

} // namespace k740::sim
