// The library that plays a zone controller, and a client that asks it to.
#pragma once

#include "app/application.h"
#include "app/k740.h"
#include "sim/client.h"
#include "tests/app/recording_host.h"
#include "tests/support/leftovers.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace k740::test {

inline constexpr int kVirtual = 900;
inline constexpr int kOtherVirtual = 901;
inline constexpr std::uint32_t kClient = 9600;
inline constexpr const char* kClientIP = "192.168.4.1";
inline constexpr std::uint32_t kTask = 1001;
inline const sim::Endpoint kGroup{"225.1.2.3", 28100};
inline const sim::Endpoint kOtherGroup{"225.1.2.4", 28101};

/// A request whose fields are all different.
inline sim::PlayRequest PlayRequestOf(std::uint32_t task = kTask, const sim::Endpoint& group = kGroup) {
    sim::PlayRequest request;
    request.sequence = 0x1122;
    request.priority = 186;
    request.word9 = 0x33445566;
    request.auxPort = 0x778899AA;
    request.taskId = task;
    request.word21 = 0xBBCCDDEE;
    request.zoneMask = 0xFF;
    request.group = group.ip;
    request.groupPort = group.port;
    request.origin = kClient;
    return request;
}

class VirtualTest : public OnPrivateNetwork {
protected:
    VirtualTest() {
        EXPECT_EQ(0, K740_SetTrainCallback(RecordingHost::OnTrainMessage, RecordingHost::OnTrainAudio));
        EXPECT_EQ(0, K740_AddDevice(kVirtual, 9, ""));
        EXPECT_EQ(0, K740_AddDevice(kOtherVirtual, 9, ""));
    }
    ~VirtualTest() override { K740_SetTrainCallback(nullptr, nullptr); }

    /// Adds the address to the field and a client there.
    sim::Client& AddClient(std::uint32_t id, const std::string& address) {
        Network().AddFieldAddresses({address});
        return Field().AddClient(id, address);
    }

    /// Waits until the host was told something about a controller that many times.
    static bool WaitForMessage(int message, std::size_t count = 1, int controller = kVirtual,
                               std::uint32_t source = kClient) {
        const TrainMessageCall expected{static_cast<int>(source), controller, message};
        return RecordingHost::Get().trainMessages.WaitFor([&](const auto& call) { return call == expected; }, count);
    }
    static std::size_t CountMessages(int message, int controller = kVirtual) {
        const auto matches = [=](const TrainMessageCall& call) {
            return call.message == message && call.deviceID == controller;
        };
        return RecordingHost::Get().trainMessages.Matching(matches).size();
    }
    /// Asks a controller to play, and waits until it listens.
    void Play(const sim::PlayRequest& request = PlayRequestOf(), int controller = kVirtual) {
        const std::size_t before = CountMessages(1, controller);
        m_client.RequestPlay(static_cast<std::uint32_t>(controller), request);
        ASSERT_TRUE(WaitForMessage(1, before + 1, controller));
        ASSERT_TRUE(WaitUntil([&] { return MembersOf(request.group) > 0; }));
    }
    /// Waits for that many of a command at the client. @return the last of these
    [[nodiscard]] std::optional<sim::Event> WaitForAnswer(std::uint16_t command, std::size_t count = 1) const {
        return Field().Events().WaitFor(sim::Received(kClient, command), kPatience, count);
    }
    [[nodiscard]] std::size_t CountAnswers(std::uint16_t command) const {
        return Field().Events().Count(sim::Received(kClient, command));
    }
    /// The 532 bytes of a packet of the library.
    static sim::Bytes PacketBytes(std::uint32_t source, std::uint16_t command, const sim::Bytes& payload,
                                  std::uint8_t version = 3, std::uint32_t destination = kClient) {
        sim::ByteWriter writer;
        writer.Put<std::uint16_t>(0x4A79).Put(version).Fill(3, 0).Put(source).Put(destination).Put(command);
        writer.Put(static_cast<std::uint16_t>(payload.size())).PutAll(payload);
        sim::Bytes bytes = writer.Get();
        bytes.resize(532, 0);
        return bytes;
    }

    sim::Client& m_client = AddClient(kClient, kClientIP);
};

} // namespace k740::test
