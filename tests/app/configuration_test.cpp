#include "app/application.h"
#include "app/k740.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace k740::test {
namespace {

using sim::Received;

/// The texts after the line that ends the initialisation, up to a marker that is set here.
std::vector<std::string> TextsOfCalls() {
    K740_RemoveDevice(K740_AddDevice(1, 9, "") + 1);
    EXPECT_TRUE(WaitForLogLine("K740_RemoveDevice(1)"));
    std::vector<std::string> texts = LogTexts();
    texts.erase(texts.begin(), std::find(texts.begin(), texts.end(), "-------K740_Initialize()") + 1);
    texts.erase(texts.end() - 2, texts.end()); // the marker
    return texts;
}

using Texts = std::vector<std::string>;

class ConfigurationTest : public OnPrivateNetwork {
protected:
    ConfigurationTest() { K740_Initialize(); }
    CConfiguration& m_configuration = g_app->Configuration();
};

TEST_F(ConfigurationTest, NodeIDsFrom9500To9999AreTakenAndLogged) {
    EXPECT_EQ(0, K740_SetNodeID(9999));
    EXPECT_EQ(9999U, m_configuration.NodeID());
    EXPECT_EQ(0, K740_SetNodeID(9998));
    EXPECT_EQ(0, K740_SetNodeID(9501));
    EXPECT_EQ(0, K740_SetNodeID(9500));
    EXPECT_EQ(9500U, m_configuration.NodeID());
    EXPECT_EQ((Texts{"K740_SetNodeID(9999)", "K740_SetNodeID(9998)", "K740_SetNodeID(9501)", "K740_SetNodeID(9500)"}),
              TextsOfCalls());
}

TEST_F(ConfigurationTest, OtherNodeIDsAreRefusedWithoutALogLine) {
    for (int id : {9499, 10000, 0, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(-1, K740_SetNodeID(id)) << id;
    }
    EXPECT_EQ(9500U, m_configuration.NodeID());
    EXPECT_EQ(Texts{}, TextsOfCalls());
}

TEST_F(ConfigurationTest, AudioStreamFormatsZeroAndOneAreTakenAndLogged) {
    EXPECT_EQ(0, K740_SetAudioStreamFormat(1));
    EXPECT_EQ(1, m_configuration.AudioStreamFormat());
    EXPECT_EQ(0, K740_SetAudioStreamFormat(0));
    EXPECT_EQ(0, m_configuration.AudioStreamFormat());
    EXPECT_EQ((Texts{"K740_SetAudioStreamFormat(1)", "K740_SetAudioStreamFormat(0)"}), TextsOfCalls());
}

TEST_F(ConfigurationTest, OtherAudioStreamFormatsAreRefusedWithoutALogLine) {
    K740_SetAudioStreamFormat(1);
    for (int format : {-1, 2, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(-1, K740_SetAudioStreamFormat(format)) << format;
    }
    EXPECT_EQ(1, m_configuration.AudioStreamFormat());
    EXPECT_EQ(Texts{"K740_SetAudioStreamFormat(1)"}, TextsOfCalls());
}

TEST_F(ConfigurationTest, FirstMulticastIPIsStoredAndLoggedWithoutBlanks) {
    EXPECT_EQ(0, K740_SetFirstMulticastIP("  239.1.1.1   "));
    EXPECT_EQ("239.1.1.1", m_configuration.FirstMulticastIP());
    EXPECT_EQ(Texts{"K740_SetFirstMulticastIP('239.1.1.1')"}, TextsOfCalls());
}

TEST_F(ConfigurationTest, FirstMulticastIPNeedsNineCharactersAndAGroupsFirstOctet) {
    EXPECT_EQ(0, K740_SetFirstMulticastIP("224.1.1.1"));
    EXPECT_EQ(0, K740_SetFirstMulticastIP("239.1.1.10"));
    for (const char* bad :
         {"223.1.1.1", "240.0.0.1", "1.1.1.1", "224.1.1.", "   224.1.1.   ", "", " ", "%s%n%d%s%n%d"}) {
        EXPECT_EQ(-1, K740_SetFirstMulticastIP(bad)) << bad;
    }
    EXPECT_EQ(-1, K740_SetFirstMulticastIP(nullptr));
    EXPECT_EQ("239.1.1.10", m_configuration.FirstMulticastIP());
    EXPECT_EQ((Texts{"K740_SetFirstMulticastIP('224.1.1.1')", "K740_SetFirstMulticastIP('239.1.1.10')"}),
              TextsOfCalls());
}

TEST_F(ConfigurationTest, NICIsStoredAndLoggedAsGiven) {
    EXPECT_EQ(0, K740_SetNIC("10.1.1.1"));
    EXPECT_EQ("10.1.1.1", m_configuration.NIC());
    EXPECT_EQ(0, K740_SetNIC(" 10.1.1.2 "));
    EXPECT_EQ(" 10.1.1.2 ", m_configuration.NIC());
    EXPECT_EQ((Texts{"K740_SetNIC('10.1.1.1')", "K740_SetNIC(' 10.1.1.2 ')"}), TextsOfCalls());
}

TEST_F(ConfigurationTest, NICsThatAreNoUnicastAddressAreRefusedWithoutALogLine) {
    for (const char* bad : {"127.0.0.1", "0.0.0.0", "224.0.0.1", "239.255.1.1", "256.1.1.1", "1.2.3", "", "%s%n%d"}) {
        EXPECT_EQ(-1, K740_SetNIC(bad)) << bad;
    }
    EXPECT_EQ(-1, K740_SetNIC(nullptr));
    EXPECT_EQ("", m_configuration.NIC());
    EXPECT_EQ(Texts{}, TextsOfCalls());
}

TEST_F(ConfigurationTest, FormatCharactersInAnAcceptedTextAreLoggedAsTheyAre) {
    EXPECT_EQ(0, K740_SetNIC("10.1.1.1%s%n%d"));
    EXPECT_EQ(0, K740_SetFirstMulticastIP("225.1.1.1%s%n%d"));
    EXPECT_EQ((Texts{"K740_SetNIC('10.1.1.1%s%n%d')", "K740_SetFirstMulticastIP('225.1.1.1%s%n%d')"}), TextsOfCalls());
}

TEST_F(ConfigurationTest, OverlongTextsAreRefusedOrKeptWhole) {
    const std::string refused(200'000, 'x');
    EXPECT_EQ(-1, K740_SetNIC(refused.c_str()));
    EXPECT_EQ(-1, K740_SetFirstMulticastIP(refused.c_str()));
    const std::string kept = "10.1.1.1" + refused;
    EXPECT_EQ(0, K740_SetNIC(kept.c_str()));
    EXPECT_EQ(kept, m_configuration.NIC());
    EXPECT_EQ(Texts{"K740_SetNIC('" + kept + "')"}, TextsOfCalls());
}

TEST_F(ConfigurationTest, VoiceAlarmModeIsEnteredAndLeftAtTheDevice) {
    AddZoneController(33, "192.168.1.33");
    ASSERT_EQ(0, K740_AddDevice(33, 1, "192.168.1.33"));
    EXPECT_EQ(0, K740_EnterVAMode(33, 255));
    EXPECT_TRUE(Field().Events().WaitFor(Received(33, 0x0123), kPatience));
    EXPECT_EQ(0, K740_ExitVAMode(33, 255));
    EXPECT_TRUE(Field().Events().WaitFor(Received(33, 0x0124), kPatience));
}

TEST_F(ConfigurationTest, VoiceAlarmModeNeedsADeviceAndAPriority) {
    K740_AddDevice(33, 1, "192.168.1.33");
    for (int id : {34, 0, -1, 1000, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(-1, K740_EnterVAMode(id, 255)) << id;
        EXPECT_EQ(-1, K740_ExitVAMode(id, 255)) << id;
    }
    for (int priority : {0, -1, 256, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(-1, K740_EnterVAMode(33, priority)) << priority;
        EXPECT_EQ(-1, K740_ExitVAMode(33, priority)) << priority;
    }
}

} // namespace
} // namespace k740::test
