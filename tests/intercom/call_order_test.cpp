// In which order a call's packets, callbacks and log lines come, and what the host may do in its callback.
#include "tests/intercom/call_fixture.h"

#include <thread>

namespace k740::test {
namespace {

using ::testing::ElementsAre;

constexpr const char* kMarker = "K740_SetNodeID(9501)";
constexpr const char* kMessageLog = "PINTERCOMMESSAGE";

std::atomic<int> g_result{77}; // of the call that the host makes in its callback

/// Leaves a line in both logs.
void Mark(const MessageCall&) {
    K740_SetNodeID(9501);
    g_app->Log().PushLog2(kMessageLog, 0, "marker");
}

class CallOrderTest : public CallFixture {
protected:
    static void React(IntercomHost::Reaction reaction) { Host().reaction = reaction; }

    ~CallOrderTest() override { React(nullptr); }

    /// Lets an intercom that rings be hung up and marks the log when the station hears the first of the two answers.
    /// @param call  how many calls were before
    /// @return      whether the mark comes before the line; not always, as marking may take longer than the 20 ms
    ///              between the answers
    template <typename HangUp> bool IsMarkedBefore(const std::string& line, std::size_t call, HangUp hangUp) {
        m_station.Invite(kIntercom);
        EXPECT_TRUE(WaitForAnswers(3 * call + 1));
        std::thread host(hangUp);
        EXPECT_TRUE(WaitForAnswers(3 * call + 2));
        g_app->Log().PushLog("", 0, kMarker);
        host.join();
        EXPECT_TRUE(WaitForAnswers(3 * call + 3));
        const auto lines = static_cast<std::ptrdiff_t>(call + 1);
        EXPECT_TRUE(WaitForExactLine(line, lines));
        EXPECT_TRUE(WaitForExactLine(kMarker, lines));
        const auto texts = LogTexts();
        return std::find(texts.rbegin(), texts.rend(), line) < std::find(texts.rbegin(), texts.rend(), kMarker);
    }
    /// A line that came before the packets would never be behind the mark.
    template <typename HangUp> bool ComesAfterThePackets(const std::string& line, HangUp hangUp) {
        for (std::size_t call = 0; call < 20; ++call) {
            if (IsMarkedBefore(line, call, hangUp)) { return true; }
        }
        return false;
    }

    /// @return the lines of the log since the marker or the line of the packet, whichever came first
    static std::vector<std::string> LinesOfTheEvent(const std::string& last) {
        EXPECT_TRUE(WaitForExactLine(last));
        std::vector<std::string> texts = LogTexts();
        std::erase_if(texts, [](const std::string& text) {
            return text.find("Receive Q-RPK") == std::string::npos && text != kMarker &&
                   text.find("K740_Accept") == std::string::npos && text.find("K740_HangUp") == std::string::npos;
        });
        return texts;
    }
};

TEST_F(CallOrderTest, InvitationIsAnsweredThenToldThenLogged) {
    static std::atomic<bool> answeredBefore{false};
    static const sim::Installation* field = &Field();
    K740_EnableCallbackLog(1);
    React([](const MessageCall& call) {
        answeredBefore = field->Events().WaitFor(sim::Received(kStation, 0x8701), std::chrono::seconds(2)).has_value();
        Mark(call);
    });
    RingFromStation();
    EXPECT_TRUE(answeredBefore);
    EXPECT_THAT(LinesOfTheEvent("=====Receive Q-RPK 5000 invite intercom 5500."),
                ElementsAre(kMarker, "=====Receive Q-RPK 5000 invite intercom 5500."));
    ASSERT_TRUE(WaitForCallbackLogLine(kMessageLog, "PINTERCOMMESSAGE("));
    EXPECT_THAT(LogTexts(kMessageLog), ElementsAre("marker", "PINTERCOMMESSAGE(5000, 5500, 1)"));
}

TEST_F(CallOrderTest, AnswersAreLoggedThenTold) {
    K740_EnableCallbackLog(1);
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    React(Mark);
    m_station.AnswerCall(kIntercom, 1);
    ASSERT_TRUE(Host().WaitForMessage({kStation, kIntercom, kAccepted}));
    EXPECT_THAT(LinesOfTheEvent(kMarker), ElementsAre("Receive Q-RPK 5000 accept intercom 5500.", kMarker));
    m_station.AnswerCall(kIntercom, 2);
    ASSERT_TRUE(WaitForExactLine(kMarker, 2));
    EXPECT_THAT(LinesOfTheEvent(kMarker), ElementsAre("Receive Q-RPK 5000 accept intercom 5500.", kMarker,
                                                      "Receive Q-RPK 5000 hang up intercom 5500.", kMarker));
    ASSERT_TRUE(WaitForCallbackLogLine(kMessageLog, "PINTERCOMMESSAGE(", 2));
    EXPECT_THAT(LogTexts(kMessageLog),
                ElementsAre("marker", "PINTERCOMMESSAGE(5000, 5500, 3)", "marker", "PINTERCOMMESSAGE(5000, 5500, 2)"));
}

TEST_F(CallOrderTest, MessagesAreLoggedOnlyWhileTheCallbackLogIsOn) {
    RingFromStation();
    EXPECT_EQ(0, K740_EnableCallbackLog(1));
    m_station.AnswerCall(kIntercom, 2);
    ASSERT_TRUE(WaitForCallbackLogLine(kMessageLog, "PINTERCOMMESSAGE(5000, 5500, 2)"));
    EXPECT_EQ(1U, LogTexts(kMessageLog).size());
}

TEST_F(CallOrderTest, HangingUpIsLoggedAfterItsPackets) {
    EXPECT_TRUE(ComesAfterThePackets("K740_HangUp(5500)", [] { K740_HangUp(kIntercom); }));
}

TEST_F(CallOrderTest, TimeOutIsLoggedAfterItsPackets) {
    EXPECT_TRUE(ComesAfterThePackets("Intercom 5500 hang up for ring is timeout.",
                                     [] { g_app->Talker().MaintainTalkStatus(time(nullptr) + 60); }));
}

TEST_F(CallOrderTest, HostMayAcceptInTheCallback) {
    React([](const MessageCall& call) { g_result = K740_Accept(call.intercomID, call.stationID); });
    RingFromStation();
    ASSERT_TRUE(WaitForAnswers(2));
    EXPECT_EQ(0, g_result);
    EXPECT_THAT(CodesAt(), ElementsAre(0, 1));
    EXPECT_EQ(Talking(), StateOf());
    EXPECT_THAT(LinesOfTheEvent("=====Receive Q-RPK 5000 invite intercom 5500."),
                ElementsAre("K740_Accept(5500, 5000)", "=====Receive Q-RPK 5000 invite intercom 5500."));
}

TEST_F(CallOrderTest, HostMayRefuseInTheCallback) {
    React([](const MessageCall& call) { g_result = K740_HangUp(call.intercomID); });
    RingFromStation();
    ASSERT_TRUE(WaitForAnswers(3));
    EXPECT_EQ(0, g_result);
    EXPECT_THAT(CodesAt(), ElementsAre(0, 2, 2));
    EXPECT_EQ(Idle(), StateOf());
    EXPECT_THAT(LinesOfTheEvent("=====Receive Q-RPK 5000 invite intercom 5500."),
                ElementsAre("K740_HangUp(5500)", "=====Receive Q-RPK 5000 invite intercom 5500."));
}

TEST_F(CallOrderTest, HostMayCallBackInTheCallback) {
    RingFromStation();
    React([](const MessageCall& call) { g_result = K740_Invite(call.intercomID, call.stationID); });
    m_station.AnswerCall(kIntercom, 2);
    ASSERT_TRUE(Host().WaitForMessage({kStation, kIntercom, kHungUpByStation}));
    EXPECT_EQ(0, g_result);
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kStation, 0x0701), kSoon));
    EXPECT_EQ(Ringing(), StateOf());
}

TEST_F(CallOrderTest, InTheCallbackOfAnInvitationTheIntercomRings) {
    React([](const MessageCall& call) { g_result = K740_Invite(call.intercomID, call.stationID); });
    RingFromStation();
    EXPECT_EQ(-3, g_result);
}

TEST_F(CallOrderTest, InTheCallbackOfAnAcceptanceAudioIsTaken) {
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    React([](const MessageCall& call) {
        unsigned char audio[2] = {};
        g_result = K740_SendIntercomAudio(call.intercomID, audio, 2);
    });
    m_station.AnswerCall(kIntercom, 1);
    ASSERT_TRUE(Host().WaitForMessage({kStation, kIntercom, kAccepted}));
    EXPECT_EQ(0, g_result);
}

TEST_F(CallOrderTest, HostMaySwitchItsCallbackOffInTheCallback) {
    React([](const MessageCall&) { g_result = K740_SetIntercomCallback(nullptr, nullptr); });
    RingFromStation();
    EXPECT_EQ(0, g_result);
    m_station.AnswerCall(kIntercom, 2);
    EXPECT_TRUE(WaitForLogLine("but has not set SDK callback PINTERCOMMESSAGE."));
    EXPECT_EQ(1U, Messages().size());
}

} // namespace
} // namespace k740::test
