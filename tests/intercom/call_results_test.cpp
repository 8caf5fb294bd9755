// What the calls of the host return, and what they log.
#include "tests/intercom/call_fixture.h"

#include <climits>

namespace k740::test {
namespace {

using ::testing::IsEmpty;

constexpr int kController = 33;
constexpr int kNotRegistered = 5998;

class CallResultsTest : public CallFixture {
protected:
    CallResultsTest() { EXPECT_EQ(0, K740_AddDevice(kController, 1, "192.168.1.33")); }

    /// @return what the host has logged by calls of intercoms
    static std::vector<std::string> CallLines() {
        K740_SetNodeID(9999);
        EXPECT_TRUE(WaitForExactLine("K740_SetNodeID(9999)"));
        std::vector<std::string> texts = LogTexts();
        std::erase_if(texts, [](const std::string& text) {
            return text.find("Invite") == std::string::npos && text.find("Accept") == std::string::npos &&
                   text.find("HangUp") == std::string::npos && text.find("Intercom") == std::string::npos;
        });
        return texts;
    }
    void ExpectNothingSent() {
        PassMarker();
        for (const int station : {kStation, kOtherStation}) {
            EXPECT_THAT(CodesAt(station), IsEmpty());
            EXPECT_THAT(ReceivedBy(station, 0x0701), IsEmpty());
        }
    }
};

TEST_F(CallResultsTest, OnlyIntercomsCallAndAccept) {
    for (const int id : {kStation, kController, kNotRegistered, 0, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(-2, K740_Invite(id, kStation)) << id;
        EXPECT_EQ(-2, K740_Accept(id, kStation)) << id;
        EXPECT_EQ(-2, K740_HangUp(id)) << id;
    }
    ExpectNothingSent();
    EXPECT_TRUE(WaitForExactLine("K740_Invite(-2147483648, 5000)"));
    EXPECT_TRUE(WaitForExactLine("K740_Accept(33, 5000)"));
    EXPECT_TRUE(WaitForExactLine("K740_HangUp(5998)"));
}

TEST_F(CallResultsTest, OnlyStationsAreCalledAndAccepted) {
    RingFromStation();
    for (const int id : {kOtherIntercom, kIntercom, kController, kNotRegistered, 0, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(-2, K740_Invite(kOtherIntercom, id)) << id;
        EXPECT_EQ(-2, K740_Accept(kIntercom, id)) << id;
    }
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_EQ(Idle(0), StateOf(kOtherIntercom));
}

TEST_F(CallResultsTest, WrongDeviceComesBeforeWrongState) {
    RingFromStation();
    EXPECT_EQ(-2, K740_Invite(kIntercom, kController));
    EXPECT_EQ(-2, K740_Accept(kOtherIntercom, kController));
}

TEST_F(CallResultsTest, AcceptingWhatDoesNotRingIsRefused) {
    EXPECT_EQ(-3, K740_Accept(kIntercom, kStation));
    ExpectNothingSent();
    RingAndAccept();
    EXPECT_EQ(-3, K740_Accept(kIntercom, kStation));
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    EXPECT_EQ(-3, K740_Accept(kIntercom, kStation));
    EXPECT_TRUE(WaitForExactLine("K740_Accept(5500, 5000)", 4));
}

TEST_F(CallResultsTest, WithoutTheCallbackNothingIsDoneOrLogged) {
    RingFromStation();
    PassMarker();
    const auto sent = CodesAt();
    ASSERT_EQ(0, K740_SetIntercomCallback(nullptr, IntercomHost::OnAudio));
    unsigned char audio[2] = {};
    EXPECT_EQ(-1, K740_Invite(kOtherIntercom, kStation));
    EXPECT_EQ(-1, K740_Accept(kIntercom, kStation));
    EXPECT_EQ(-1, K740_HangUp(kIntercom));
    EXPECT_EQ(-1, K740_SendIntercomAudio(kIntercom, audio, 2));
    EXPECT_EQ(-1, K740_Invite(kController, kController)) << "before the devices are looked at";
    EXPECT_EQ(-1, K740_HangUp(kController));
    PassMarker();
    EXPECT_EQ(sent, CodesAt());
    EXPECT_THAT(ReceivedBy(kStation, 0x0701), IsEmpty());
    EXPECT_EQ(Ringing(), StateOf());
    EXPECT_THAT(CallLines(), ::testing::Each("Register callback PINTERCOMAUDIO()"))
        << "the register lines name no call";
}

TEST_F(CallResultsTest, IntercomThatNeverHadACallIsIdleWithoutAPeer) {
    EXPECT_EQ(Idle(0), StateOf());
}

TEST_F(CallResultsTest, StatusIsThereForIntercomsOnlyAndElseUntouched) {
    for (const int id : {kStation, kController, kNotRegistered, 0, -1, INT_MAX, INT_MIN}) {
        int status = 77;
        int peer = 78;
        EXPECT_EQ(-1, K740_GetIntercomStatus(id, &status, &peer)) << id;
        EXPECT_EQ(77, status);
        EXPECT_EQ(78, peer);
    }
}

TEST_F(CallResultsTest, StatusNeedsNoCallback) {
    RingFromStation();
    ASSERT_EQ(0, K740_SetIntercomCallback(nullptr, nullptr));
    EXPECT_EQ(Ringing(), StateOf());
}

TEST_F(CallResultsTest, NullResultsAreSkipped) {
    RingFromStation();
    int value = 0;
    EXPECT_EQ(0, K740_GetIntercomStatus(kIntercom, nullptr, nullptr));
    EXPECT_EQ(0, K740_GetIntercomStatus(kIntercom, &value, nullptr));
    EXPECT_EQ(1, value);
    EXPECT_EQ(0, K740_GetIntercomStatus(kIntercom, nullptr, &value));
    EXPECT_EQ(kStation, value);
}

TEST_F(CallResultsTest, AudioNeedsDataAndALength) {
    RingAndAccept();
    unsigned char audio[2] = {};
    EXPECT_EQ(-1, K740_SendIntercomAudio(kIntercom, nullptr, 2));
    EXPECT_EQ(-1, K740_SendIntercomAudio(kIntercom, audio, 0));
    EXPECT_EQ(-1, K740_SendIntercomAudio(kIntercom, audio, -1));
    EXPECT_EQ(-1, K740_SendIntercomAudio(kIntercom, audio, INT_MIN));
    EXPECT_EQ(-1, K740_SendIntercomAudio(kNotRegistered, nullptr, 2)) << "before the state is looked at";
    EXPECT_EQ(0, K740_SendIntercomAudio(kIntercom, audio, 1));
    EXPECT_EQ(0, K740_SendIntercomAudio(kIntercom, audio, 2));
}

TEST_F(CallResultsTest, AudioOfAMebibyteFitsOnlyWhereThereIsABufferAlready) {
    RingAndAccept();
    sim::Bytes audio(1'048'576);
    const int length = static_cast<int>(audio.size());
    EXPECT_EQ(-3, K740_SendIntercomAudio(kIntercom, audio.data(), length));
    EXPECT_EQ(0, K740_SendIntercomAudio(kIntercom, audio.data(), length - 1));
    EXPECT_EQ(-3, K740_SendIntercomAudio(kIntercom, audio.data(), 2));
    EXPECT_EQ(0, K740_SendIntercomAudio(kIntercom, audio.data(), 1));
    EXPECT_EQ(-3, K740_SendIntercomAudio(kIntercom, audio.data(), 1));
    ASSERT_EQ(0, g_app->Talker().GetTalkerAudio(kIntercom, audio.data(), audio.size()));
    EXPECT_EQ(0, K740_SendIntercomAudio(kIntercom, audio.data(), length)) << "empty, but there";
}

TEST_F(CallResultsTest, AudioNeedsATalk) {
    unsigned char audio[2] = {};
    EXPECT_EQ(-2, K740_SendIntercomAudio(kIntercom, audio, 2)) << "no call yet";
    EXPECT_EQ(-2, K740_SendIntercomAudio(kNotRegistered, audio, 2));
    EXPECT_EQ(-2, K740_SendIntercomAudio(kStation, audio, 2));
    RingFromStation();
    EXPECT_EQ(-2, K740_SendIntercomAudio(kIntercom, audio, 2)) << "rings";
    EXPECT_EQ(0, K740_Accept(kIntercom, kStation));
    EXPECT_EQ(0, K740_SendIntercomAudio(kIntercom, audio, 2));
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    EXPECT_EQ(-2, K740_SendIntercomAudio(kIntercom, audio, 2)) << "over";
}

TEST_F(CallResultsTest, StatusAndAudioAreNotLogged) {
    unsigned char audio[2] = {};
    EXPECT_EQ(Idle(0), StateOf());
    EXPECT_EQ(-2, K740_SendIntercomAudio(kIntercom, audio, 2));
    K740_SetNodeID(9999);
    ASSERT_TRUE(WaitForExactLine("K740_SetNodeID(9999)"));
    EXPECT_EQ(0, CountLogLines("K740_GetIntercomStatus"));
    EXPECT_EQ(0, CountLogLines("K740_SendIntercomAudio"));
}

class FirstCallTest : public OnPrivateNetwork, public ::testing::WithParamInterface<int> {};

TEST_P(FirstCallTest, InitialisesTheLibrary) {
    unsigned char audio[2] = {};
    int value = 0;
    const auto call = [&]() -> int {
        switch (GetParam()) {
        case 0:
            return K740_Invite(kIntercom, kStation);
        case 1:
            return K740_Accept(kIntercom, kStation);
        case 2:
            return K740_HangUp(kIntercom);
        case 3:
            return K740_GetIntercomStatus(kIntercom, &value, &value);
        default:
            return K740_SendIntercomAudio(kIntercom, audio, 2);
        }
    };
    EXPECT_EQ(-1, call());
    EXPECT_TRUE(WaitForLogLine("-------K740_Initialize()"));
}

INSTANTIATE_TEST_SUITE_P(Calls, FirstCallTest, ::testing::Range(0, 5));

} // namespace
} // namespace k740::test
