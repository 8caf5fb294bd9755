#include "sim/records.h"

#include "sim/address.h"

#include <algorithm>
#include <span>

namespace k740::sim {
namespace {

constexpr std::size_t kZoneTextOffset = 26;

// Constants of a play request, whose meaning is the receiver's.
constexpr std::uint16_t kWord29 = 0xFFFF;
constexpr std::uint32_t kWord50 = 32;

} // namespace

PlayRequest ReadPlayRequest(const Packet& packet) {
    const ByteView payload(packet.payload);
    PlayRequest request;
    request.sequence = ReadAt<std::uint16_t>(payload, 0);
    request.priority = ReadAt<std::uint16_t>(payload, 4);
    request.dryContactMask = payload[8];
    request.word9 = ReadAt<std::uint32_t>(payload, 9);
    request.auxPort = ReadAt<std::uint32_t>(payload, 13);
    request.taskId = ReadAt<std::uint32_t>(payload, 17);
    request.word21 = ReadAt<std::uint32_t>(payload, 21);
    request.recovery = payload[25];
    request.zoneMask = ReadAt<std::uint32_t>(payload, 38);
    request.group = AddressText(ReadAt<std::uint32_t>(payload, 54));
    request.groupPort = ReadAt<std::uint16_t>(payload, 58);
    request.origin = ReadAt<std::uint32_t>(payload, 62);
    return request;
}

Bytes Payload(const PlayRequest& request) {
    ByteWriter writer;
    writer.Put(request.sequence).Fill(2, 0).Put(request.priority);
    writer.Fill(2, request.dryContactMask != 0 ? 1 : 0).Put(request.dryContactMask); // flags for the mask at 6 and 7
    writer.Put(request.word9).Put(request.auxPort).Put(request.taskId).Put(request.word21);
    writer.Put(request.recovery).Fill(3, 0).Put(kWord29).Fill(7, 0).Put(request.zoneMask).Fill(8, 0);
    writer.Put(kWord50).Put(AddressNumber(request.group)).Put<std::uint32_t>(request.groupPort).Put(request.origin);
    return writer.Get();
}

Bytes Payload(const PlayAnswer& answer) {
    ByteWriter writer;
    writer.Put<std::uint8_t>(answer.joinFollows ? 1 : 0).Put(answer.result).Put(answer.sequence);
    writer.Put(answer.tokenA).Put(answer.tokenB).Fill(8, kMeaningless).Put(answer.taskId).Fill(4, kMeaningless);
    return writer.Get();
}

Bytes Payload(const JoinReport& report) {
    ByteWriter writer;
    writer.Put(report.status).Put(report.tokenA).Put(report.tokenB).Fill(16, kMeaningless);
    return writer.Get();
}

std::uint32_t ReadCloseAudioTask(const Packet& packet) {
    return ReadAt<std::uint32_t>(packet.payload, 0);
}

std::uint32_t ReadCloseZonesMask(const Packet& packet) {
    return ReadAt<std::uint32_t>(packet.payload, 0);
}

Bytes Payload(const StatusReport& report) {
    const std::span amplifiers(report.amplifierStates);
    ByteWriter writer;
    writer.Put(report.deviceStatus).PutAll(report.zoneStates).PutAll(amplifiers.first<4>());
    writer.Put(report.deviceIdEcho).Put(report.deviceFault).PutAll(report.zoneValues).PutAll(report.bytes50To56);
    writer.Put(report.zoneFlags).Put(report.extraA).Put(report.extraB).PutAll(amplifiers.last<4>());
    writer.PutAll(report.bytes64To79).Put(report.trailingWord).Put(report.trailingByte);
    return writer.Get();
}

Bytes Payload(const PagingStatus& status) {
    ByteWriter writer;
    writer.Put(status.state).Put(status.status1).PutAll(status.bytes2To3);
    writer.Put(status.wordA).Put(status.wordB).Put(status.status8);
    return writer.Get();
}

PagingTaskRequest ReadPagingTaskRequest(const Packet& packet) {
    PagingTaskRequest request;
    request.source = packet.source;
    request.length = packet.length;
    request.taskId = ReadAt<std::uint32_t>(packet.payload, 0);
    request.start = packet.payload[4] == 1;
    request.priority = packet.payload[5];
    const std::size_t end = std::clamp<std::size_t>(packet.length, kZoneTextOffset, kPayloadCapacity);
    request.zones.assign(packet.payload.begin() + kZoneTextOffset,
                         packet.payload.begin() + static_cast<std::ptrdiff_t>(end));
    return request;
}

Bytes Payload(const PagingTaskAnswer& answer) {
    ByteWriter writer;
    writer.Put(answer.echo).Put(answer.result);
    return writer.Get();
}

} // namespace k740::sim
