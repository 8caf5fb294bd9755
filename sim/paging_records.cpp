#include "sim/paging_records.h"

#include "sim/records.h"

namespace k740::sim {

MonitorRequest ReadMonitorRequest(const Packet& packet) {
    return {ReadAt<std::uint32_t>(packet.payload, 0), ReadAt<std::uint16_t>(packet.payload, 4), packet.payload[6]};
}

Bytes MonitorAnswerPayload(std::int16_t result) {
    return ByteWriter().Put(result).Get();
}

Bytes CallAnswerPayload(std::uint8_t code) {
    return ByteWriter().Put(code).Fill(8, 0).Get();
}

Bytes InvitePayload() {
    return Bytes(8, kMeaningless);
}

Bytes HandshakePayload() {
    return Bytes(4, kMeaningless);
}

} // namespace k740::sim
