#include "sim/aux_interface.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

namespace k740::test {
namespace {

constexpr std::uint32_t kId = 7000;
constexpr const char* kIp = "192.168.3.1";

class AuxInterfaceTest : public OnPrivateNetwork {
protected:
    AuxInterfaceTest() {
        Network().AddFieldAddresses({kIp});
        m_aux = &Field().AddAuxInterface(kId, kIp);
    }

    Station m_station;
    sim::AuxInterface* m_aux = nullptr;
};

TEST_F(AuxInterfaceTest, HeartbeatIsNotedAndTheVersionIsAnswered) {
    m_station.Request(kIp, kId, 0x0125, sim::Bytes{0x1C, 0x25, 0, 0});
    m_station.Request(kIp, kId, 0x0132, sim::Bytes{0x58, 0x1B, 0, 0});
    EXPECT_EQ(118U, m_station.AnswerPayload(0x8132).size());
    EXPECT_EQ(1U, Field().Events().Count(sim::Received(kId, 0x0125)));
}

TEST_F(AuxInterfaceTest, StreamsToAControllerThatPlaysIt) {
    const sim::ZoneController& controller = AddZoneController(33, "192.168.1.33");
    m_station.Play("192.168.1.33", 33, 1001, 1);
    ASSERT_EQ(29U, m_station.AnswerPayload(0x8205).size());
    ASSERT_EQ(26U, m_station.AnswerPayload(0x8206).size());
    sim::AudioStream stream;
    stream.period = std::chrono::milliseconds(2);
    stream.count = 3;
    m_aux->Stream(kGroup, stream);
    ASSERT_TRUE(controller.WaitForDatagrams(3, kSoon));
    EXPECT_EQ(kId, controller.Recordings().at(0).node);
    EXPECT_EQ(0U, controller.Recordings().at(0).gaps);
}

} // namespace
} // namespace k740::test
