// train beside a simulated client of its virtual zone controller.
#include "tests/examples/example_fixture.h"
#include "tests/support/leftovers.h"
#include "tests/support/wait_until.h"

namespace k740::test {
namespace {

constexpr std::uint32_t kTrain = 900;
constexpr std::uint32_t kClient = 9501;
constexpr const char* kClientIP = "192.168.4.1";
constexpr std::uint8_t kOutOfUse = 8; // what train status 3 makes of zone 1
const sim::Endpoint kGroup{"225.1.2.3", 28100};

class TrainTest : public ExampleTest {
protected:
    sim::Client& AddClient() {
        Network().AddFieldAddresses({kClientIP});
        return Field().AddClient(kClient, kClientIP);
    }
    /// @param state  of zone 1 in the status report
    [[nodiscard]] bool WaitForZoneState(std::uint8_t state) const {
        const auto shows = [=](const sim::Event& event) {
            return sim::Received(kClient, sim::command::kStatusReport)(event) && event.packet->payload[1] == state;
        };
        return Field().Events().WaitFor(shows, kSoon).has_value();
    }
};

TEST_F(TrainTest, ClientsSeeItsStatusAndItPlaysWhatTheyAskFor) {
    sim::Client& client = AddClient();
    Example host("train 60 heard.raw 192.168.1.166 3");
    client.RepeatHeartbeat(kTrain, std::chrono::milliseconds(200));
    ASSERT_TRUE(WaitForZoneState(kOutOfUse));

    sim::PlayRequest request;
    request.taskId = 7;
    request.zoneMask = 1;
    request.group = kGroup.ip;
    request.groupPort = kGroup.port;
    request.origin = kClient;
    client.RequestPlay(kTrain, request);
    ASSERT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 1; }));
    EXPECT_NE("", host.LineWith("train 900: plays for 9501"));
    const CodedTone tone(10, kClient);
    const sim::AudioSource& source = client.Stream(kGroup, tone.Stream());
    ASSERT_TRUE(WaitUntil([&] { return !source.IsStreaming(); }));
    client.SendEndOfStream(kGroup, kTrain);
    EXPECT_NE("", host.LineWith("train 900: has played for 9501"));

    host.Signal(SIGTERM);
    EXPECT_EQ(0, host.End());
    EXPECT_EQ(tone.heard, ReadSamples("heard.raw"));
}

TEST_F(TrainTest, WithoutAClientItEndsOnTime) {
    Example host("train 1 heard.raw");
    EXPECT_EQ("", host.Rest());
    EXPECT_EQ(0, host.End());
}

} // namespace
} // namespace k740::test
