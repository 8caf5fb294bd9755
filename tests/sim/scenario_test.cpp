// The scenario files, each with the library as the host.
#include "app/k740.h"
#include "sim/device_kind.h"
#include "sim/scenario.h"
#include "tests/app/recording_host.h"
#include "tests/intercom/intercom_host.h"
#include "tests/sim/program.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <iomanip>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

constexpr int kTask = 1001;
constexpr int kBroadcasting = 2;
constexpr int kMostControllers = 460; // registered, beside 40 paging stations: the library takes 500 devices
constexpr int kVirtual = 900;
constexpr int kIntercom = 5500;
constexpr int kPagingStation = 5000;

/// Blocks of audio that callbacks were given.
std::atomic<int> g_monitorBlocks{0};
std::atomic<int> g_pushToTalkBlocks{0};

int CountMonitor(int, int, unsigned char*, int) {
    ++g_monitorBlocks;
    return 0;
}
int CountPushToTalk(int, int, unsigned char*, int) {
    ++g_pushToTalkBlocks;
    return 0;
}

class ScenarioTest : public OnPrivateNetwork {
protected:
    ScenarioTest() {
        K740_Initialize();
        K740_SetNIC(sim::kStationAddress);
        K740_SetDeviceCallback(RecordingHost::OnZCUStatus, RecordingHost::OnZoneStatus, RecordingHost::OnVolumesV3,
                               nullptr, CountMonitor, RecordingHost::OnRPKStatus, CountPushToTalk);
        K740_SetTrainCallback(RecordingHost::OnTrainMessage, RecordingHost::OnTrainAudio);
        K740_SetIntercomCallback(IntercomHost::OnMessage, IntercomHost::OnAudio);
    }
    ~ScenarioTest() override {
        m_program.reset();
        K740_Deinitialize();
    }

    /// Registers the scenario's devices, and starts it.
    /// @param before  what precedes the program in a shell
    void Start(const std::string& name, double seconds, const std::string& before = "") {
        const std::string file = std::string(K740_SCENARIOS) + '/' + name;
        sim::SimOptions options;
        sim::LoadScenario(file, options);
        std::vector<std::string> addresses;
        for (const sim::DeviceOption& device : options.devices) { addresses.push_back(device.address); }
        Network().AddFieldAddresses(addresses);
        for (const sim::DeviceOption& device : options.devices) { Register(device); }
        m_program = std::make_unique<Program>(
            Network(), "--duration " + std::to_string(seconds) + " --scenario '" + file + "'", before);
        ASSERT_EQ("ready", Json::parse(m_program->Line()).at("event"));
    }
    /// Reads what the program tells until all these controllers have joined a broadcast.
    void AwaitJoins(std::set<int> controllers) {
        while (!controllers.empty()) {
            const std::string line = m_program->Line();
            ASSERT_NE("", line) << controllers.size() << " have not joined";
            m_lines.push_back(Json::parse(line));
            if (m_lines.back().at("event") == "joined") { controllers.erase(m_lines.back().at("device").get<int>()); }
        }
    }
    /// Waits for the end. @return what the program told
    std::vector<Json> Lines() {
        const std::vector<Json> last = m_program->RemainingLines();
        m_lines.insert(m_lines.end(), last.begin(), last.end());
        EXPECT_EQ(0, m_program->End());
        return m_lines;
    }
    /// Sends again and again, at the pace of live audio, until the work is done.
    template <typename Send, typename Work> static void WhileSending(Send send, Work work) {
        std::atomic<bool> over = false;
        std::thread sender([&] {
            K740_PACING pacing{};
            while (!over) {
                K740_SleepStart(&pacing);
                send();
                K740_SleepEnd(20, &pacing);
            }
        });
        work();
        over = true;
        sender.join();
    }
    static void SendSilence() {
        std::vector<unsigned char> block(1764);
        K740_SendAudioStreamProc(kTask, block.data(), static_cast<int>(block.size()));
    }
    /// Zone 1 of the controllers from 1 on, as the library is told of it.
    static std::string FirstZones(int controllers) {
        std::ostringstream zones;
        zones << std::hex << std::uppercase << std::setfill('0');
        for (int id = 1; id <= controllers; ++id) { zones << (id > 1 ? ";" : "") << std::setw(4) << id << "01"; }
        return zones.str();
    }
    static bool Broadcasts() {
        return WaitUntil([] { return K740_GetTaskStatus(kTask) == kBroadcasting; });
    }
    static bool IsOnLine(int controller) {
        return RecordingHost::Get().zcuStatus.WaitFor(
            [=](const auto& call) { return call.deviceID == controller && call.status == 1; });
    }

private:
    static void Register(const sim::DeviceOption& device) {
        const std::map<sim::DeviceKind, int> types{{sim::DeviceKind::ZoneController, 1},
                                                   {sim::DeviceKind::PagingStation, 2},
                                                   {sim::DeviceKind::AuxInterface, 3}};
        const auto type = types.find(device.kind);
        if (type == types.end()) { return; } // clients are not registered
        if (device.kind == sim::DeviceKind::ZoneController && device.id > kMostControllers) { return; }
        // The scenario for two generations has one of version 2.
        const int code = device.kind == sim::DeviceKind::ZoneController && device.id == 34 ? 0 : type->second;
        EXPECT_EQ(0, K740_AddDevice(static_cast<int>(device.id), code, device.address.c_str())) << device.id;
    }

    std::unique_ptr<Program> m_program;
    std::vector<Json> m_lines; // that were read before its end
};

TEST_F(ScenarioTest, SmallStationPlaysMonitorsTalksAndCalls) {
    Start("small-station.yaml", 6);
    ASSERT_EQ(0, K740_SetRPKPTTMulticastIP(kPagingStation, "224.0.6.1"));
    ASSERT_EQ(0, K740_MonitorZone(33, 1, 1));
    std::array<char, 100> version{};
    K740_GetDeviceVersion(33, version.data(), 99);
    EXPECT_STREQ("APP:3.4.1, MCU:1.3.0, Kernel:5.10.0", version.data());
    K740_GetVolume(33);
    const VolumeCall volumes{33, {15, 14, 13, 12, 15, 14, 13, 12, -1, -1}};
    EXPECT_TRUE(RecordingHost::Get().volumes.WaitFor([&](const auto& call) { return call == volumes; }));
    EXPECT_TRUE(IsOnLine(33));
    EXPECT_TRUE(RecordingHost::Get().zcuStatus.WaitFor(
        [](const auto& call) { return call.deviceID == 34 && call.fault == 2 && call.amplifiers[0] == 3; }));
    ASSERT_EQ(0, K740_StartAudioStreamTask(kTask, 100, 70, 0, "002101;002201", 0));
    ASSERT_TRUE(Broadcasts());
    WhileSending(SendSilence, [] {
        EXPECT_TRUE(WaitUntil([] { return g_monitorBlocks > 5; }));
        EXPECT_TRUE(WaitUntil([] { return g_pushToTalkBlocks > 20; }));
    });
    K740_StopTask(kTask);
    ASSERT_EQ(0, K740_AddDevice(kIntercom, 10, ""));
    ASSERT_EQ(0, K740_Invite(kIntercom, kPagingStation));
    const MessageCall accepted{kPagingStation, kIntercom, kAccepted};
    EXPECT_TRUE(IntercomHost::Get().messages.WaitFor([&](const auto& call) { return call == accepted; }));
    const std::vector<Json> lines = Lines();
    EXPECT_EQ(1U, Of(lines, "audio-begins", 33).size());
    EXPECT_EQ(1U, Of(lines, "audio-begins", 34).size());
    ASSERT_EQ(1U, Of(lines, "recording", 33).size());
    EXPECT_EQ(0, Of(lines, "recording", 33)[0].at("gaps"));
    EXPECT_EQ("225.3.0.1:28100", Of(lines, "stream-begins", 7000).at(0).at("peer"));
}

TEST_F(ScenarioTest, LineIsWhollyOnLine) {
    Start("line.yaml", 14, "prlimit --nofile=1024:"); // as systems commonly grant
    const auto online = [] {
        std::set<int> controllers;
        for (const auto& call : RecordingHost::Get().zcuStatus.All()) {
            if (call.status == 1) { controllers.insert(call.deviceID); }
        }
        return controllers.size();
    };
    EXPECT_TRUE(WaitUntil([&] { return online() == kMostControllers; })) << online();
    const auto stations = [] {
        std::set<int> found;
        for (const auto& call : RecordingHost::Get().rpkStatus.All()) {
            if (call.values[1] == 1) { found.insert(call.values[0]); }
        }
        return found.size();
    };
    EXPECT_TRUE(WaitUntil([&] { return stations() == 40; })) << stations();
    ASSERT_EQ(0, K740_StartAudioStreamTask(kTask, 100, 70, 0, FirstZones(kMostControllers).c_str(), 0));
    EXPECT_TRUE(Broadcasts());
    std::set<int> all;
    for (int id = 1; id <= kMostControllers; ++id) { all.insert(id); }
    AwaitJoins(all);
    K740_StopTask(kTask);
    const std::vector<Json> lines = Lines();
    EXPECT_EQ(std::size_t{kMostControllers}, Of(lines, "joined").size());
    EXPECT_GT(Of(lines, "held-back").at(0).at("count"), 2 * 540);
}

TEST_F(ScenarioTest, FaultyDevicesDoNotHarmTheOthers) {
    Start("faulty.yaml", 16);
    std::array<char, 100> text{};
    EXPECT_LT(0, K740_GetDeviceVersion(47, text.data(), 99));  // it has power still
    EXPECT_EQ(-2, K740_GetDeviceVersion(40, text.data(), 99)); // silent; takes 4 s
    EXPECT_EQ(-2, K740_GetDeviceVersion(47, text.data(), 99)); // has none
    EXPECT_LT(0, K740_GetDeviceVersion(47, text.data(), 99));  // and again
    EXPECT_EQ(-2, K740_GetDeviceVersion(45, text.data(), 99)); // in another's name
    EXPECT_LT(0, K740_GetDeviceVersion(43, text.data(), 99));  // twice
    ASSERT_EQ(0, K740_StartAudioStreamTask(kTask, 100, 70, 0, "002801;002901;002A01;002B01;002C01;002D01;002E01", 0));
    ASSERT_TRUE(Broadcasts());
    WhileSending(SendSilence, [this] { AwaitJoins({41, 43, 45}); });
    const std::vector<Json> lines = Lines();
    for (const int player : {41, 43, 45}) { EXPECT_EQ(1U, Of(lines, "joined", player).size()) << player; }
    for (const int other : {40, 42, 46}) { EXPECT_EQ(0U, Of(lines, "joined", other).size()) << other; }
    EXPECT_GE(Of(lines, "lost", 44).size(), 1U);
    std::vector<std::string> commands;
    for (const Json& line : Of(lines, "command")) { commands.push_back(line.at("text")); }
    EXPECT_EQ((std::vector<std::string>{"remove 47", "restore 47"}), commands);
}

TEST_F(ScenarioTest, IntercomCallsSpeaksHangsUpAndCallsAgain) {
    ASSERT_EQ(0, K740_AddDevice(kIntercom, 10, ""));
    IntercomHost::Get().keepAudio = false;
    IntercomHost::Get().reaction = [](const MessageCall& call) {
        const bool first = IntercomHost::Get().messages.All().empty();
        if (call.message == kInvited && first) { K740_Accept(call.intercomID, call.stationID); }
    };
    Start("intercom.yaml", 13);
    auto& host = IntercomHost::Get();
    const MessageCall invited{kPagingStation, kIntercom, kInvited};
    ASSERT_TRUE(host.messages.WaitFor([&](const auto& call) { return call == invited; }));
    std::vector<unsigned char> second(88200);
    K740_SendIntercomAudio(kIntercom, second.data(), static_cast<int>(second.size()));
    EXPECT_TRUE(WaitUntil([&] { return host.audioBlocks > 20U; }));
    // What is queued in the first seconds of a call is dropped.
    WhileSending([&] { K740_SendIntercomAudio(kIntercom, second.data(), 1764); },
                 [] {
                     EXPECT_TRUE(WaitUntil([] {
                         int status = 0;
                         K740_GetIntercomStatus(kIntercom, &status, nullptr);
                         return status != 2;
                     }));
                 });
    EXPECT_TRUE(host.messages.WaitFor([](const auto& call) { return call.message == kHungUpByStation; }));
    EXPECT_TRUE(host.messages.WaitFor([&](const auto& call) { return call == invited; }, 2)); // it rings
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    const std::vector<Json> lines = Lines();
    ASSERT_EQ(1U, Of(lines, "intercom-begins").size());
    EXPECT_EQ(kIntercom, Of(lines, "intercom-begins")[0].at("intercom"));
    EXPECT_EQ(1U, Of(lines, "stream-begins", kPagingStation).size());
    EXPECT_GE(Of(lines, "stream-ends", kPagingStation).at(0).at("datagrams"), 80);
    std::vector<std::string> answers;
    for (const Json& line : Of(lines, "received", kPagingStation)) {
        if (line.at("name") == "call-answer") { answers.push_back(line.at("answer")); }
    }
    EXPECT_EQ((std::vector<std::string>{"ringing", "accepted", "ringing", "hung-up", "hung-up"}), answers);
}

TEST_F(ScenarioTest, TrainIsWatchedAndPlaysToItsHost) {
    ASSERT_EQ(0, K740_AddDevice(kVirtual, 9, ""));
    ASSERT_EQ(0, K740_SetTrainStatus(kVirtual, 2));
    Start("train.yaml", 5.5);
    EXPECT_TRUE(RecordingHost::Get().trainMessages.WaitFor(
        [](const auto& call) { return call.sourceID == 9501 && call.deviceID == kVirtual && call.message == 1; }));
    EXPECT_TRUE(WaitUntil([] { return RecordingHost::Get().trainAudio.All().size() > 40; }));
    EXPECT_TRUE(RecordingHost::Get().trainMessages.WaitFor([](const auto& call) { return call.message == 2; }));
    EXPECT_EQ(3001, RecordingHost::Get().trainAudio.All()[0].taskID);
    const std::vector<Json> lines = Lines();
    std::vector<std::string> heard;
    for (const Json& line : Of(lines, "received", 9501)) { heard.push_back(line.at("name")); }
    for (const char* name : {"heartbeat-answer", "status", "play-answer", "join-report", "zone-groups"}) {
        EXPECT_NE(heard.end(), std::find(heard.begin(), heard.end(), name)) << name;
    }
}

} // namespace
} // namespace k740::test
