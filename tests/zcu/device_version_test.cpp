// Asking devices for their version.
#include "common/stopwatch.h"
#include "tests/zcu/controller_fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

constexpr int kRoom = 64;
constexpr const char* kV3Version = "APP:2.0.1, MCU:1.3.0, Kernel:5.10.0";

class DeviceVersionTest : public ControllerTest {
protected:
    /// Asks with room for any version. @return its text, or the code of a failure
    static std::string Version(int id) {
        std::vector<char> text(kRoom + 1, 'x');
        const int result = K740_GetDeviceVersion(id, text.data(), kRoom);
        EXPECT_EQ('x', text.back());
        if (result < 0) { return std::to_string(result); }
        EXPECT_EQ(std::string(text.data()).size(), static_cast<std::size_t>(result));
        return text.data();
    }
    /// Makes the library take a version answer.
    static void TakeAnswer(std::uint32_t sender, const sim::Version& version) {
        const sim::Bytes payload = sim::Payload(version);
        _device_version_t record;
        std::memcpy(&record, payload.data(), sizeof(record));
        const _vxa_cmd_packet_t packet = MakePacket(sender, 9500, 0x8132, record);
        g_app->ZCU().DEV_Response_GetVersion(&packet);
    }
    static void Fault(sim::Device& device, const sim::AnswerFault& fault) { device.SetAnswerFault(0x0132, fault); }
};

TEST_F(DeviceVersionTest, TheRequestNamesTheQueriedDevice) {
    EXPECT_EQ(kV3Version, Version(kV3));
    EXPECT_EQ(RequestBytes(kV3, 0x0132, {33, 0, 0, 0}), WaitForRequest(kV3, 0x0132)->bytes);
    EXPECT_EQ(1U, RequestsUntilNow(kV3, 0x0132).size());
}

TEST_F(DeviceVersionTest, EveryTypeHasItsFormat) {
    auto& aux = (Network().AddFieldAddresses({"192.168.1.71"}), Field().AddAuxInterface(7001, "192.168.1.71"));
    AddPagingStation(5000, "192.168.1.50");
    AddZoneController(500, "192.168.1.51");
    aux.SetVersion({"4.4", "3.1", "0.9"});
    ASSERT_EQ(0, K740_AddDevice(7001, 3, "192.168.1.71"));
    ASSERT_EQ(0, K740_AddDevice(5000, 2, "192.168.1.50"));
    ASSERT_EQ(0, K740_AddDevice(500, 4, "192.168.1.51"));
    m_v2.SetVersion({"1", "22", "333"});
    EXPECT_EQ("APP:22, MCU:333, Kernel:1", Version(kV2));
    EXPECT_EQ("APP:3.1, MCU:0.9, Kernel:4.4", Version(7001));
    EXPECT_EQ("APP:2.0.1, Kernel:5.10.0", Version(5000));
    EXPECT_EQ("", Version(500));
}

TEST_F(DeviceVersionTest, ItsOwnVirtualControllerAnswersWithTheVersionOfTheLibrary) {
    ASSERT_EQ(0, K740_AddDevice(900, 9, sim::kStationAddress));
    ASSERT_EQ(0, K740_AddDevice(901, 9, ""));
    EXPECT_EQ("APP:1.0.4", Version(900));
    EXPECT_EQ("APP:1.0.4", Version(901));
}

TEST_F(DeviceVersionTest, AVirtualPagingStationHasTheSameVersionButDoesNotAnswer) {
    ASSERT_EQ(0, K740_AddDevice(5500, 10, ""));
    TakeAnswer(5500, {"1", "22", "333"});
    EXPECT_EQ("APP:1.0.4", Version(5500));
    EXPECT_EQ("-2", Version(5500));
}

TEST_F(DeviceVersionTest, Of2049UnclaimedAnswersTheOldestIsForgotten) {
    for (const int id : {1, 2}) { ASSERT_EQ(0, K740_AddDevice(id, 1, ("192.168.1.20" + std::to_string(id)).c_str())); }
    for (const auto& [from, to] : {std::pair(1U, 999U), std::pair(5000U, 5999U), std::pair(7000U, 7049U)}) {
        for (std::uint32_t id = from; id <= to; ++id) { TakeAnswer(id, {"1", "22", "333"}); }
    }
    EXPECT_EQ("APP:22, MCU:333, Kernel:1", Version(2));
    EXPECT_EQ("-2", Version(1));
}

TEST_F(DeviceVersionTest, NothingIsWrittenBeyondTheSizeAndTheWholeLengthIsReturned) {
    const std::string whole = kV3Version;
    const auto length = static_cast<int>(whole.size());
    for (const int size : {1, 5, length - 1, length, length + 1}) {
        std::vector<char> text(whole.size() + 4, 'x');
        EXPECT_EQ(length, K740_GetDeviceVersion(kV3, text.data(), size));
        std::string expected = whole.substr(0, static_cast<std::size_t>(size));
        if (size > length) { expected += '\0'; }
        expected.resize(text.size(), 'x');
        EXPECT_EQ(expected, std::string(text.data(), text.size())) << size;
    }
}

TEST_F(DeviceVersionTest, WithoutATextOnlyTheLengthIsReturned) {
    EXPECT_EQ(35, K740_GetDeviceVersion(kV3, nullptr, 100));
    std::string text = "xyz";
    EXPECT_EQ(35, K740_GetDeviceVersion(kV3, text.data(), 0));
    EXPECT_EQ(35, K740_GetDeviceVersion(kV3, text.data(), -1));
    EXPECT_EQ(35, K740_GetDeviceVersion(kV3, text.data(), -2'147'483'647 - 1));
    EXPECT_EQ("xyz", text);
}

TEST_F(DeviceVersionTest, AnUnknownDeviceIsMinus1AndTheTextIsCleared) {
    for (const int id : {-1, 0, 1, 999, 5000}) {
        std::string text = "xyzuvw";
        EXPECT_EQ(-1, K740_GetDeviceVersion(id, text.data(), 5)) << id;
        EXPECT_EQ(std::string(5, '\0') + "w", text);
    }
    EXPECT_EQ(-1, K740_GetDeviceVersion(1, nullptr, 5));
}

TEST_F(DeviceVersionTest, ADeviceWithoutASocketIsMinus3) {
    tagQUERY_DEVICE_VERSION_RSP answer{};
    EXPECT_EQ(-3, g_app->ZCU().GetDeviceVersion(999, &answer));
}

TEST_F(DeviceVersionTest, ADeviceThatIsSilentForFourSecondsIsMinus2AndTheTextIsCleared) {
    Fault(m_v3, Silent());
    std::string text(kRoom, 'x');
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(-2, K740_GetDeviceVersion(kV3, text.data(), kRoom));
    EXPECT_GE(watch.TimeEnd(), 3999U);
    EXPECT_LT(watch.TimeEnd(), 4500U);
    EXPECT_EQ(std::string(kRoom, '\0'), text);
    EXPECT_EQ(1U, RequestsUntilNow(kV3, 0x0132).size()) << "no second try";
}

TEST_F(DeviceVersionTest, ASlowAnswerCounts) {
    Fault(m_v3, Late(500ms));
    EXPECT_EQ(kV3Version, Version(kV3));
}

TEST_F(DeviceVersionTest, TheSecondOfTwoAnswersIsThereForTheNextRequest) {
    Fault(m_v3, Twice());
    EXPECT_EQ(kV3Version, Version(kV3));
    m_v3.SetVersion({"1", "22", "333"});
    Fault(m_v3, Late(200ms));
    EXPECT_EQ(kV3Version, Version(kV3));
    EXPECT_EQ("APP:22, MCU:333, Kernel:1", Version(kV3));
}

TEST_F(DeviceVersionTest, AnAnswerInTheNameOfAnotherDeviceDoesNotCount) {
    Fault(m_v3, InTheNameOf(kV2));
    EXPECT_EQ("-2", Version(kV3));
    Fault(m_v2, Silent());
    EXPECT_EQ(kV3Version, Version(kV2)) << "the answer was for whom it named";
}

TEST_F(DeviceVersionTest, AnswersCountByTheRangeOfTheirSender) {
    const std::map<int, int> expected{{1, 0},     {999, 0},   {5000, 0},  {5999, 0},  {7000, 0}, {7999, 0},
                                      {1000, -2}, {4999, -2}, {6000, -2}, {6999, -2}, {8000, -2}};
    std::map<int, int> results = expected;
    std::vector<std::thread> hosts; // those who wait in vain do so at the same time
    for (auto& [id, result] : results) {
        const int type = id < 1000 ? 1 : id / 1000 == 5 ? 2 : id / 1000 == 7 ? 3 : 4;
        ASSERT_EQ(0, K740_AddDevice(id, type, ("192.168.3." + std::to_string(1 + hosts.size())).c_str()));
        TakeAnswer(static_cast<std::uint32_t>(id), {});
        hosts.emplace_back(
            [id = id, &result = result] { result = std::min(0, K740_GetDeviceVersion(id, nullptr, 0)); });
    }
    for (std::thread& host : hosts) { host.join(); }
    EXPECT_EQ(expected, results);
}

TEST_F(DeviceVersionTest, TheNewestAnswerIsTaken) {
    Fault(m_v3, Silent());
    TakeAnswer(kV3, {"1", "old", "3"});
    TakeAnswer(kV3, {"1", "new", "3"});
    EXPECT_EQ("APP:new, MCU:3, Kernel:1", Version(kV3));
    EXPECT_EQ("APP:old, MCU:3, Kernel:1", Version(kV3));
}

TEST_F(DeviceVersionTest, ATextWithoutAnEndEndsWithTheTexts) {
    _device_version_t version;
    std::memset(&version, 'v', sizeof(version));
    const _vxa_cmd_packet_t packet = MakePacket(kV3, 9500, 0x8132, version);
    Fault(m_v3, Silent());
    g_app->ZCU().DEV_Response_GetVersion(&packet);
    // From 24, 36 and 84 to 112.
    EXPECT_EQ(88 + 76 + 28 + static_cast<int>(std::string("APP:, MCU:, Kernel:").size()),
              K740_GetDeviceVersion(kV3, nullptr, 0));
}

TEST_F(DeviceVersionTest, QueriesOfDifferentDevicesWaitSideBySide) {
    m_v2.SetVersion({"1", "22", "333"});
    Fault(m_v2, Late(300ms));
    Fault(m_v3, Late(300ms));
    std::string other;
    std::thread host([&] { other = Version(kV2); });
    EXPECT_EQ(kV3Version, Version(kV3));
    host.join();
    EXPECT_EQ("APP:22, MCU:333, Kernel:1", other);
}

TEST_F(DeviceVersionTest, NothingIsLogged) {
    EXPECT_EQ(kV3Version, Version(kV3));
    ASSERT_EQ(0, K740_SetNodeID(9999)); // the log's next line
    EXPECT_TRUE(WaitForExactLine("K740_SetNodeID(9999)"));
    EXPECT_EQ(0, CountLogLines("ersion("));
}

} // namespace
} // namespace k740::test
