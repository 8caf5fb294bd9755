// One packet or a few, written to a capture file and dissected.
#pragma once

#include "sim/audio_datagram.h"
#include "sim/wire.h"
#include "tests/support/temporary_directory.h"
#include "tests/wireshark/capture_file.h"
#include "tests/wireshark/tshark.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace k740::test {

inline constexpr std::uint32_t kNode = 9500;
inline constexpr std::uint32_t kController = 33;
inline constexpr std::uint32_t kVirtualController = 200;
inline constexpr std::uint32_t kStation = 5000;
inline constexpr std::uint32_t kIntercom = 5500;
inline constexpr std::uint32_t kAux = 7001;
inline constexpr const char* kCapture = "made.pcap";
inline const sim::Endpoint kGroup{"225.0.0.1", sim::kAudioPort};

/// The 532 bytes of a command packet.
inline sim::Bytes Command(std::uint32_t source, std::uint32_t destination, std::uint16_t code,
                          const sim::Bytes& payload = {}) {
    return sim::Pack(sim::MakePacket(source, destination, code, payload));
}
inline sim::Bytes Request(std::uint16_t code, const sim::Bytes& payload = {}, std::uint32_t device = kController) {
    return Command(kNode, device, code, payload);
}
inline sim::Bytes Answer(std::uint16_t code, const sim::Bytes& payload = {}, std::uint32_t device = kController) {
    return Command(device, kNode, code, payload);
}

/// An audio datagram of the exact size of its type, its payload the bytes 0, 1, 2 and so on.
inline sim::Bytes Audio(std::uint16_t type) {
    sim::AudioDatagram audio;
    audio.node = kNode;
    audio.stream = 1;
    audio.type = type;
    if (const auto format = sim::FormatOf(type)) {
        audio.length = format->length;
        audio.payload.resize(format->payloadSize);
    }
    for (std::size_t i = 0; i < audio.payload.size(); ++i) { audio.payload[i] = static_cast<std::uint8_t>(i); }
    audio.block = {{-1234, 7}, {567, 88}};
    return sim::Pack(audio);
}

/// In a directory of its own.
class DissectorTest : public ::testing::Test {
protected:
    /// Dissects datagrams that a host sends to a port of a device.
    static std::vector<Row> DissectAll(const std::vector<sim::Bytes>& datagrams, const std::vector<std::string>& fields,
                                       std::uint16_t port = sim::kRequestPort, const std::string& options = {}) {
        Capture(datagrams, port);
        std::vector<Row> rows = Dissect(kCapture, fields, options);
        EXPECT_EQ(datagrams.size(), rows.size());
        rows.resize(datagrams.size());
        return rows;
    }
    static Row DissectOne(const sim::Bytes& datagram, const std::vector<std::string>& fields,
                          std::uint16_t port = sim::kRequestPort, const std::string& options = {}) {
        return DissectAll({datagram}, fields, port, options).front();
    }
    /// @return the Info column of each
    static std::vector<std::string> InfosOf(const std::vector<sim::Bytes>& datagrams,
                                            std::uint16_t port = sim::kRequestPort) {
        return Column(DissectAll(datagrams, {kInfo}, port), kInfo);
    }
    static std::string InfoOf(const sim::Bytes& datagram) { return InfosOf({datagram}).front(); }
    /// @return the messages of the expert infos of each
    static std::vector<std::string> ExpertsOf(const std::vector<sim::Bytes>& datagrams,
                                              std::uint16_t port = sim::kRequestPort) {
        return Column(DissectAll(datagrams, {kExpert}, port), kExpert);
    }
    static std::string TextOf(const sim::Bytes& datagram, std::uint16_t port = sim::kRequestPort) {
        Capture({datagram}, port);
        return DissectAsText(kCapture);
    }

private:
    static void Capture(const std::vector<sim::Bytes>& datagrams, std::uint16_t port) {
        CaptureFile capture(kCapture);
        for (const sim::Bytes& datagram : datagrams) { capture.Add(datagram, kHost, {kDevice.ip, port}); }
    }

    const TemporaryDirectory m_directory;
};

} // namespace k740::test
