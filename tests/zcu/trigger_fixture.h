// The handshake with one zone controller: the library, simulated controllers, and a request to be made.
#pragma once

#include "app/application.h"
#include "app/k740.h"
#include "sim/zone_controller.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace k740::test {

inline constexpr std::chrono::milliseconds kSoon{7000}; // beyond the 5 s that a trigger waits
inline constexpr std::uint32_t kController = 33;
inline constexpr int kTask = 1001;

/// Everything that a trigger reports.
struct TriggerResult {
    int success = -1;
    TriggerOutcome outcome;
};

/// The simulated controller kController is registered; m_param asks it for task kTask.
class TriggerTest : public OnPrivateNetwork {
protected:
    TriggerTest() {
        m_param.taskID = kTask;
        m_param.sequence = 1;
        m_param.zcuID = kController;
        m_param.taskIDAgain = kTask;
        m_param.priority = 70;
        m_param.recovery = 1;
        m_param.zoneMask = 3;
        m_param.multicastIP = 0xE1000001; // 225.0.0.1
        m_param.multicastPort = 28100;
        m_param.auxDeviceID = 7001;
        m_param.auxPort = 4;
        m_param.sourceNodeID = 9500;
    }

    sim::ZoneController& AddRegistered(std::uint32_t id) {
        const std::string address = "192.168.1." + std::to_string(id);
        sim::ZoneController& controller = AddZoneController(id, address);
        EXPECT_EQ(0, K740_AddDevice(static_cast<int>(id), 1, address.c_str()));
        return controller;
    }
    void Reply(sim::PlayReply reply) {
        sim::PlayBehaviour behaviour;
        behaviour.reply = reply;
        m_controller.SetBehaviour(behaviour);
    }

    TriggerResult TriggerStream() {
        TriggerResult result;
        result.success = g_app->ZCU().ZCU_Request_TriggerNetTask(&m_param, result.outcome);
        return result;
    }
    TriggerResult TriggerAUX() {
        TriggerResult result;
        result.success = g_app->ZCU().ZCU_Request_TriggerLBXTask_V2(&m_param, result.outcome);
        return result;
    }

    /// Gives the library an answer to m_param as if a controller had sent it.
    void GiveAnswer(sim::PlayAnswer answer, std::uint32_t controller = kController) {
        Dispatch(sim::MakePacket(controller, 9500, 0x8205, sim::Payload(answer)));
    }
    [[nodiscard]] sim::PlayAnswer MatchingAnswer(std::uint32_t tokenA, std::uint16_t result = 255) const {
        return {true, result, m_param.sequence, tokenA, tokenA + 1, m_param.taskID};
    }
    void GiveReport(const sim::JoinReport& report, std::uint32_t controller = kController) {
        Dispatch(sim::MakePacket(controller, 9500, 0x8206, sim::Payload(report)));
    }

    [[nodiscard]] std::size_t Requests() const {
        return Field().Events().Count(sim::Received(kController, sim::command::kPlay));
    }
    sim::Packet WaitForPacket(std::uint16_t command) {
        const auto event = Field().Events().WaitFor(sim::Received(kController, command), kSoon);
        EXPECT_TRUE(event);
        return event ? event->packet.value_or(sim::Packet{}) : sim::Packet{};
    }

    sim::ZoneController& m_controller = AddRegistered(kController);
    tagZCU_PARAM m_param{};

private:
    static void Dispatch(const sim::Packet& packet) {
        const sim::Bytes bytes = sim::Pack(packet);
        _vxa_cmd_packet_t record;
        std::memcpy(&record, bytes.data(), sizeof(record));
        if (packet.command == 0x8205) {
            g_app->ZCU().ZCU_Response_TriggerTask(&record);
        } else {
            g_app->ZCU().ZCU_Response_JoinMultiCast(&record);
        }
    }
};

/// What was reported, in one line: success, results, tokens set, join flag, accepted without a join.
inline std::string Summary(const TriggerResult& result) {
    const TriggerOutcome& outcome = result.outcome;
    return std::to_string(result.success) + " trigger " + std::to_string(outcome.triggerResult) + " join " +
           std::to_string(outcome.joinResult) + " tokens " + (outcome.tokenA != 0 ? "A" : "-") +
           (outcome.tokenB != 0 ? "B" : "-") + " follows " + std::to_string(outcome.joinFollows) +
           (outcome.acceptedNoJoin ? " no join" : "");
}

} // namespace k740::test
