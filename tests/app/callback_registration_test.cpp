#include "app/application.h"
#include "app/k740.h"
#include "tests/app/recording_host.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace k740::test {
namespace {

using ::testing::ElementsAre;

int OnTaskStatus(int, int) {
    return 0;
}
int OnAudio(int, int, unsigned char*, int) {
    return 0;
}
int OnMessage(int, int, int) {
    return 0;
}
int OnIntercomAudio(int, unsigned char*, int) {
    return 0;
}

int RegisterAllOfDevices() {
    return K740_SetDeviceCallback(RecordingHost::OnZCUStatus, RecordingHost::OnZoneStatus, RecordingHost::OnVolumesV2,
                                  OnTaskStatus, OnAudio, RecordingHost::OnRPKStatus, OnAudio);
}

int RegisterNoneOfDevices() {
    return K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}

/// @return the lines about registration that were logged before now
std::vector<std::string> RegistrationLines() {
    K740_SetNodeID(9999);
    EXPECT_TRUE(WaitForLogLine("K740_SetNodeID(9999)"));
    std::vector<std::string> texts = LogTexts();
    std::erase_if(texts, [](const std::string& text) { return text.find("Register") == std::string::npos; });
    return texts;
}

class CallbackRegistrationTest : public OnPrivateNetwork {
protected:
    CallbackRegistrationTest() { K740_Initialize(); }
    void ExpectAllNull() const {
        EXPECT_EQ(nullptr, m_callbacks.zcuStatus.Get());
        EXPECT_EQ(nullptr, m_callbacks.rpkStatus.Get());
        EXPECT_EQ(nullptr, m_callbacks.zoneStatus.Get());
        EXPECT_EQ(nullptr, m_callbacks.zcuVolume.Get());
        EXPECT_EQ(nullptr, m_callbacks.taskStatus.Get());
        EXPECT_EQ(nullptr, m_callbacks.monitorZone.Get());
        EXPECT_EQ(nullptr, m_callbacks.trainMessage.Get());
        EXPECT_EQ(nullptr, m_callbacks.trainAudio.Get());
        EXPECT_EQ(nullptr, m_callbacks.rpkPTTAudio.Get());
        EXPECT_EQ(nullptr, m_callbacks.intercomMessage.Get());
        EXPECT_EQ(nullptr, m_callbacks.intercomAudio.Get());
    }

    CHostCallbacks& m_callbacks = g_app->Callbacks();
};

TEST_F(CallbackRegistrationTest, AllAreOffAfterInitialize) {
    ExpectAllNull();
}

TEST_F(CallbackRegistrationTest, DeviceCallbacksAreLoggedInTheirOrder) {
    EXPECT_EQ(0, RegisterAllOfDevices());
    EXPECT_THAT(RegistrationLines(), ElementsAre("Register callback PZCUSTATUS()", "Register callback PZONESTATUS()",
                                                 "Register callback PZCUVOLUME()", "Register callback PMONITORZONE()",
                                                 "Register callback PTASKSTATUS()", "Register callback PRPKSTATUS()",
                                                 "Register callback PRPKPTTAUDIO()"));
}

TEST_F(CallbackRegistrationTest, TrainCallbacksAreStoredAndLogged) {
    EXPECT_EQ(0, K740_SetTrainCallback(OnMessage, OnAudio));
    EXPECT_EQ(&OnMessage, m_callbacks.trainMessage.Get());
    EXPECT_EQ(&OnAudio, m_callbacks.trainAudio.Get());
    EXPECT_THAT(RegistrationLines(),
                ElementsAre("Register callback PTRAINMESSAGE()", "Register callback PTRAINAUDIO()"));
}

TEST_F(CallbackRegistrationTest, IntercomCallbacksAreStoredAndLogged) {
    EXPECT_EQ(0, K740_SetIntercomCallback(OnMessage, OnIntercomAudio));
    EXPECT_EQ(&OnMessage, m_callbacks.intercomMessage.Get());
    EXPECT_EQ(&OnIntercomAudio, m_callbacks.intercomAudio.Get());
    EXPECT_THAT(RegistrationLines(),
                ElementsAre("Register callback PINTERCOMMESSAGE()", "Register callback PINTERCOMAUDIO()"));
}

TEST_F(CallbackRegistrationTest, DeviceCallbacksAreStoredInTheirPlaces) {
    RegisterAllOfDevices();
    EXPECT_EQ(&RecordingHost::OnZCUStatus, m_callbacks.zcuStatus.Get());
    EXPECT_EQ(&RecordingHost::OnZoneStatus, m_callbacks.zoneStatus.Get());
    EXPECT_EQ(&RecordingHost::OnVolumesV2, m_callbacks.zcuVolume.Get());
    EXPECT_EQ(&OnTaskStatus, m_callbacks.taskStatus.Get());
    EXPECT_EQ(&OnAudio, m_callbacks.monitorZone.Get());
    EXPECT_EQ(&RecordingHost::OnRPKStatus, m_callbacks.rpkStatus.Get());
    EXPECT_EQ(&OnAudio, m_callbacks.rpkPTTAudio.Get());
}

TEST_F(CallbackRegistrationTest, OnlyWhatIsSetIsLogged) {
    K740_SetDeviceCallback(nullptr, nullptr, nullptr, OnTaskStatus, nullptr, RecordingHost::OnRPKStatus, nullptr);
    K740_SetTrainCallback(nullptr, OnAudio);
    K740_SetIntercomCallback(OnMessage, nullptr);
    EXPECT_THAT(RegistrationLines(),
                ElementsAre("Register callback PTASKSTATUS()", "Register callback PRPKSTATUS()",
                            "Register callback PTRAINAUDIO()", "Register callback PINTERCOMMESSAGE()"));
}

TEST_F(CallbackRegistrationTest, NullSwitchesACallbackOffAndLogsNothing) {
    RegisterAllOfDevices();
    K740_SetTrainCallback(OnMessage, OnAudio);
    K740_SetIntercomCallback(OnMessage, OnIntercomAudio);
    EXPECT_EQ(0, RegisterNoneOfDevices());
    EXPECT_EQ(0, K740_SetTrainCallback(nullptr, nullptr));
    EXPECT_EQ(0, K740_SetIntercomCallback(nullptr, nullptr));
    ExpectAllNull();
    EXPECT_EQ(11U, RegistrationLines().size()) << "those of the first three calls";
}

} // namespace
} // namespace k740::test
