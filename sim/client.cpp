#include "sim/client.h"

namespace k740::sim {
namespace {

constexpr std::uint32_t kWholeTask = 3; // second word of close audio

} // namespace

Client::Client(const Surroundings& surroundings, std::uint32_t id, const std::string& address)
    : Device(surroundings, id, address, {kReplyPort}) {}

void Client::SendHeartbeat(std::uint32_t controller, std::uint16_t port) {
    SendToStation(command::kHeartbeat, controller, ByteWriter().Put(Id()).Get(), port);
}

void Client::RequestPlay(std::uint32_t controller, const PlayRequest& request, std::uint16_t port) {
    SendToStation(command::kPlay, controller, Payload(request), port);
}

void Client::CloseAudio(std::uint32_t controller, std::uint32_t taskId, std::uint16_t port) {
    SendToStation(command::kCloseAudio, controller, ByteWriter().Put(taskId).Put(kWholeTask).Get(), port);
}

void Client::CloseZones(std::uint32_t controller, std::uint32_t zoneMask, std::uint16_t port) {
    SendToStation(command::kCloseZones, controller, ByteWriter().Put(zoneMask).Fill(8, 0).Get(), port);
}

void Client::QueryVersion(std::uint32_t controller, std::uint16_t port) {
    SendToStation(command::kGetVersion, controller, ByteWriter().Put(controller).Get(), port);
}

void Client::QueryZoneGroups(std::uint32_t controller, std::uint16_t port) {
    SendToStation(command::kGetZoneGroups, controller, {}, port);
}

void Client::AddTaskZones(std::uint32_t controller, ByteView extension, std::uint16_t port) {
    SendToStation(command::kAddTaskZones, controller, extension, port);
}

void Client::RemoveTaskZones(std::uint32_t controller, ByteView extension, std::uint16_t port) {
    SendToStation(command::kRemoveTaskZones, controller, extension, port);
}

void Client::RepeatHeartbeat(std::uint32_t controller, std::chrono::milliseconds period) {
    Repeat(period, [this, controller] { SendHeartbeat(controller); });
}

} // namespace k740::sim
