// Calls that are accepted, hung up and made by several threads at once.
#include "common/thread.h"
#include "tests/intercom/call_fixture.h"

#include <atomic>
#include <thread>

namespace k740::test {
namespace {

constexpr int kRounds = 40; // of each thread

class CallRaceTest : public CallFixture {
protected:
    /// Makes the library take a packet of the station, as a receiver's thread does.
    static void Take(std::uint16_t command, std::uint8_t code) {
        _vxa_cmd_packet_t packet;
        FillK740PackageHeader(&packet, kStation, kIntercom, command, 9);
        packet.payload[0] = code;
        g_app->Communication().ProcessResponse(&packet, kStationIP);
    }
    template <typename Work> static std::thread Repeat(Work work) {
        return std::thread([work] {
            for (int round = 0; round < kRounds; ++round) { work(); }
        });
    }
};

TEST_F(CallRaceTest, EveryTalkHasOneSenderWhichEnds) {
    const int threads = RunningThreads();
    std::atomic<int> accepted{0};
    std::vector<std::thread> racers;
    racers.push_back(Repeat([&] {
        K740_Invite(kIntercom, kStation);
        accepted += K740_Accept(kIntercom, kStation) == 0;
    }));
    racers.push_back(Repeat([&] { accepted += K740_Accept(kIntercom, kOtherStation) == 0; }));
    racers.push_back(Repeat([] { K740_HangUp(kIntercom); }));
    racers.push_back(Repeat([] {
        Take(0x0701, 0);
        Take(0x8701, 1);
    }));
    racers.push_back(Repeat([] { Take(0x8701, 2); }));
    racers.push_back(Repeat([] {
        unsigned char audio[100] = {};
        K740_SendIntercomAudio(kIntercom, audio, sizeof(audio));
        StateOf();
        g_app->Talker().MaintainTalkStatus(time(nullptr) + 61);
    }));
    for (std::thread& racer : racers) { racer.join(); }
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    EXPECT_EQ(3, StateOf().status);
    const auto byStation = Host().messages.Matching([](const MessageCall& call) { return call.message == kAccepted; });
    const auto talks = accepted + static_cast<std::ptrdiff_t>(byStation.size());
    EXPECT_GT(talks, 0);
    EXPECT_TRUE(WaitUntil([=] { return RunningThreads() == threads; }, std::chrono::seconds(30)));
    EXPECT_TRUE(WaitForLogLine("Intercom 5500 stop send audio.", talks));
    EXPECT_EQ(talks, CountLogLines("Intercom 5500 stop send audio."));
    EXPECT_EQ(-1, g_app->Talker().RemoveTalkerAudio(kIntercom)) << "nothing is left";
}

TEST_F(CallRaceTest, OfTwoThatAcceptOneIsTheFirst) {
    for (int round = 0; round < kRounds; ++round) {
        ASSERT_EQ(0, K740_Invite(kIntercom, kStation));
        std::atomic<int> successes{0};
        const auto accept = [&](int station) { successes += K740_Accept(kIntercom, station) == 0; };
        std::thread other([&] { accept(kOtherStation); });
        accept(kStation);
        other.join();
        ASSERT_EQ(1, successes);
        ASSERT_EQ(2, StateOf().status);
        Take(0x8701, 2);
    }
}

TEST_F(CallRaceTest, OfTwoThatInviteOneIsTheFirst) {
    for (int round = 0; round < kRounds; ++round) {
        std::atomic<int> successes{0};
        const auto invite = [&](int station) { successes += K740_Invite(kIntercom, station) == 0; };
        std::thread other([&] { invite(kOtherStation); });
        invite(kStation);
        other.join();
        ASSERT_EQ(1, successes);
        Take(0x8701, 2);
    }
}

TEST_F(CallRaceTest, CallbacksMayBeSwitchedWhileCallsGoOn) {
    std::thread setter = Repeat([] {
        K740_SetIntercomCallback(nullptr, nullptr);
        K740_SetIntercomCallback(IntercomHost::OnMessage, IntercomHost::OnAudio);
    });
    std::thread caller = Repeat([] {
        Take(0x0701, 0);
        Take(0x8701, 2);
    });
    setter.join();
    caller.join();
    EXPECT_EQ(0, K740_HangUp(kIntercom));
}

} // namespace
} // namespace k740::test
