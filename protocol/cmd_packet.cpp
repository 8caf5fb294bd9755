#include "protocol/cmd_packet.h"

void FillK740PackageHeader(_vxa_cmd_packet_t* packet, uint32_t sourceID, uint32_t destinationID, uint16_t command,
                           uint16_t payloadLength) {
    std::memset(packet, 0, sizeof(*packet));
    packet->magic = kPacketMagic;
    packet->version = kPacketVersion;
    packet->sourceID = sourceID;
    packet->destinationID = destinationID;
    packet->command = command;
    packet->payloadLength = payloadLength;
}
