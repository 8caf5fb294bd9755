// A net AUX task from its source to the zone: the library only brings the two together.
#include "sim/aux_interface.h"
#include "tests/player/broadcast_fixture.h"
#include "tests/support/noise.h"

namespace k740::test {
namespace {

constexpr std::uint32_t kSource = 7001;
constexpr const char* kSourceIP = "192.168.9.1";

TEST_F(BroadcastTest, AZoneHearsWhatAnAUXInterfaceStreams) {
    Network().AddFieldAddresses({kSourceIP});
    sim::AuxInterface& source = Field().AddAuxInterface(kSource, kSourceIP);
    ASSERT_EQ(0, K740_AddDevice(static_cast<int>(kSource), 3, kSourceIP));
    const AUXArguments task;
    const auto audio = Noise(10 * 2048, 5);
    sim::AudioStream stream;
    stream.pcm.assign(audio.begin(), audio.end());
    ASSERT_EQ(0, StartAUX(task));
    ASSERT_TRUE(Reports().WaitFor(kTask, 2));
    sim::AudioSource& sending = source.Stream({task.multicastIP, 28100}, stream);
    EXPECT_TRUE(m_controller.WaitForDatagrams(20, kSoon));
    StopAndWait();
    WaitForPacket(kController, 0x0101);
    sending.Stop();
    const sim::Recording heard = m_controller.Recordings().at(0);
    EXPECT_EQ(0U, heard.gaps);
    EXPECT_EQ(0U, heard.repeats);
}

} // namespace
} // namespace k740::test
