// What a zone controller answers beside play requests: volumes and the groups of its zones, which it streams to.
#include "sim/zone_controller.h"

#include <algorithm>
#include <stdexcept>

namespace k740::sim {
namespace {

constexpr const char* kNoGroup = "0.0.0.0";
constexpr std::size_t kNodeOffset = 6; // of an audio datagram

/// The same audio in the name of another sender.
Bytes SentBy(std::uint32_t node, ByteView datagram) {
    Bytes bytes(datagram.begin(), datagram.end());
    const Bytes name = ByteWriter().Put(node).Get();
    std::copy(name.begin(), name.end(), bytes.begin() + kNodeOffset);
    return bytes;
}

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
        source = &m_zoneSources.try_emplace(zone, OnReactor(), Socket(), Id(), StreamNoter(kRequestPort)).first->second;
        source->Start({group, port}, stream);
    });
    return *source;
}

void ZoneController::StopStreams() {
    OnReactor().Run([&] {
        for (auto& [zone, source] : m_zoneSources) { source.Stop(); }
        Device::StopStreams();
    });
}

void ZoneController::Circulate(int zone, const std::string& group) {
    OnReactor().Run([&] {
        m_zoneGroups.Set(zone, group, kAudioPort);
        if (group.empty()) {
            m_circulated.erase(zone);
        } else {
            m_circulated[zone] = {group, kAudioPort};
        }
    });
}

void ZoneController::CirculateAudio(const PlaySession& session, const Datagram& datagram) {
    for (const auto& [zone, group] : m_circulated) {
        const std::uint32_t bit = 1U << (zone - 1);
        const auto playsZone = [bit](const auto& other) { return other->IsOpen() && (other->Zones() & bit) != 0; };
        const auto latest = std::find_if(m_sessions.rbegin(), m_sessions.rend(), playsZone);
        if (latest == m_sessions.rend() || latest->get() != &session) { continue; }
        Socket().Send(SentBy(Id(), datagram.bytes), group);
    }
}

} // namespace k740::sim
