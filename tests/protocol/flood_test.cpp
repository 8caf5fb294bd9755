// Status reports amid a flood on every port. Not built with sanitizers, which are too slow for it.
#include "sim/audio_encoder.h"
#include "tests/protocol/flood.h"
#include "tests/protocol/hub_fixture.h"

namespace k740::test {
namespace {

using namespace std::chrono_literals;

constexpr int kFloodRate = 20'000; // datagrams a second on each port
constexpr int kReportRate = 1'000; // status reports a second
constexpr int kControllers = 250;  // each reports every 250 ms
constexpr std::uint8_t kRounds = 8;
constexpr int kStrangerID = 999;

class FloodTest : public OnPrivateNetwork {
protected:
    FloodTest() {
        Network().AddFieldAddresses({kStrangerIP});
        for (int id = 1; id <= kControllers; ++id) {
            EXPECT_EQ(0, K740_AddDevice(id, 1, ("192.168.2." + std::to_string(id)).c_str()));
        }
    }
    /// What strangers send to the command ports: reports, unknown codes, other protocols.
    static std::vector<sim::Bytes> Commands() {
        const sim::Bytes report = sim::Pack(sim::MakePacket(kStrangerID, 9500, 0x8126, sim::Bytes(85, 1)));
        const sim::Bytes unknown = sim::Pack(sim::MakePacket(kStrangerID, 9500, 0x7777, sim::Bytes(85, 1)));
        return {report, unknown, sim::Bytes(532, 0xEE)};
    }
    /// The audio of a station that is in no call.
    static std::vector<sim::Bytes> Audio() {
        return {sim::Pack(sim::AudioEncoder(5000, 1, 341).Encode(std::vector<std::int16_t>(2048, 1000)))};
    }
    static bool HasStatus(int id, int status) {
        tagZCU_QUERYSTATUS2 record;
        return g_app->ZCU().GetZCUStatus(id, record) == 0 && record.status.deviceStatus == status;
    }
    static sim::Bytes Report(int id, std::uint8_t status) {
        sim::StatusReport report;
        report.deviceStatus = status;
        return sim::Pack(sim::MakePacket(static_cast<std::uint32_t>(id), 9500, 0x8126, sim::Payload(report)));
    }

    static constexpr const char* kStrangerIP = "192.168.9.9";
};

TEST_F(FloodTest, LosesNoStatusReportThatIsSentBesideIt) {
    const Flood requests(Network(), kStrangerIP, 28001, Commands(), kFloodRate);
    const Flood replies(Network(), kStrangerIP, 29001, Commands(), kFloodRate);
    const Flood audio(Network(), kStrangerIP, 29002, Audio(), kFloodRate);
    const sim::RawSender sender(Network(), kStrangerIP);
    const auto begin = std::chrono::steady_clock::now();
    int sent = 0;
    for (std::uint8_t round = 1; round <= kRounds; ++round) {
        for (int id = 1; id <= kControllers; ++id) {
            // A report that was lost leaves the status of the round before.
            if (round > 1) {
                ASSERT_TRUE(WaitUntil([=] { return HasStatus(id, round - 1); })) << id;
            }
            std::this_thread::sleep_until(begin + sent * 1'000'000us / kReportRate);
            sender.Send(Report(id, round), id % 2 == 0 ? 28001 : 29001);
            ++sent;
        }
    }
    for (int id = 1; id <= kControllers; ++id) {
        ASSERT_TRUE(WaitUntil([=] { return HasStatus(id, kRounds); })) << id;
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    for (const Flood* flood : {&requests, &replies, &audio}) {
        const double rate = static_cast<double>(flood->Sent()) / seconds.count();
        RecordProperty("RateOnPort" + std::to_string(flood->Port()), std::to_string(rate));
        EXPECT_GT(rate, kFloodRate / 2) << "a machine too busy to make a flood proves nothing";
    }
    RecordProperty("ReportRate", std::to_string(sent / seconds.count()));
}

} // namespace
} // namespace k740::test
