// A zone controller that sends what a zone hears on to the zone's group.
#include "sim/audio_datagram.h"
#include "tests/sim/command_fixture.h"

#include <gtest/gtest.h>

namespace k740::test {
namespace {

using sim::Event;

const sim::Endpoint kZoneGroup{"225.2.0.33", 28100};

class CirculateTest : public CommandFixture {
protected:
    void PlayAndJoin(std::uint32_t task, std::uint32_t zones) {
        station.Play(kControllerIp, kController, task, zones);
        EXPECT_EQ(29U, station.AnswerPayload(0x8205).size());
        EXPECT_EQ(26U, station.AnswerPayload(0x8206).size());
    }
    [[nodiscard]] std::optional<sim::Datagram> Hear(std::chrono::milliseconds patience = kSoon) const {
        return WaitForDatagram(m_ear, patience);
    }

    sim::AdpcmState sender;

private:
    const sim::UdpSocket m_ear = sim::UdpSocket::InGroup(kZoneGroup, sim::kStationAddress);
};

TEST_F(CirculateTest, TheZonesGroupHearsTheBroadcastInTheControllersName) {
    ASSERT_EQ("", Do("circulate 33 1 225.2.0.33"));
    PlayAndJoin(1001, 0b1);
    const sim::Bytes original = AudioBytes(0x5A, sender);
    station.Multicast(original);
    const auto heard = Hear();
    ASSERT_TRUE(heard);
    EXPECT_EQ(kController, sim::ReadAt<std::uint32_t>(heard->bytes, 6));
    EXPECT_TRUE(std::equal(original.begin() + 10, original.end(), heard->bytes.begin() + 10, heard->bytes.end()));
}

TEST_F(CirculateTest, OtherZonesAndEndsOfStreamAreNotCirculated) {
    ASSERT_EQ("", Do("circulate 33 2 225.2.0.33"));
    PlayAndJoin(1001, 0b1);
    station.Multicast(AudioBytes(0x5A, sender));
    station.Multicast(EndOfStreamBytes(kController));
    ASSERT_TRUE(Await(kController, Event::Kind::EndOfStream));
    EXPECT_FALSE(Hear(std::chrono::milliseconds(20)));
}

TEST_F(CirculateTest, NoneEndsIt) {
    ASSERT_EQ("", Do("circulate 33 1 225.2.0.33"));
    ASSERT_EQ("", Do("circulate 33 1 none"));
    PlayAndJoin(1001, 0b1);
    station.Multicast(AudioBytes(0x5A, sender));
    ASSERT_TRUE(Await(kController, Event::Kind::AudioBegins));
    EXPECT_FALSE(Hear(std::chrono::milliseconds(20)));
    station.Request(kControllerIp, kController, 0x0303, {});
    EXPECT_EQ(0U, sim::ReadAt<std::uint32_t>(station.AnswerPayload(0x8303), 0));
}

TEST_F(CirculateTest, AudioBeginsAndEndsAreNoted) {
    PlayAndJoin(1001, 0b1);
    station.Multicast(AudioBytes(0x5A, sender));
    const auto begins = Await(kController, Event::Kind::AudioBegins);
    ASSERT_TRUE(begins);
    EXPECT_EQ(1001U, begins->audio->task);
    const auto ends = Await(kController, Event::Kind::AudioEnds); // after half a second of silence
    ASSERT_TRUE(ends);
    EXPECT_EQ(1U, ends->audio->datagrams);
    EXPECT_GE(ends->time - begins->time, std::chrono::milliseconds(500));
    station.Multicast(AudioBytes(0x5A, sender));
    EXPECT_TRUE(Field().Events().WaitFor(sim::Happened(kController, Event::Kind::AudioBegins), kSoon, 2));
    station.CloseAudio(kControllerIp, kController, 1001);
    EXPECT_TRUE(Field().Events().WaitFor(sim::Happened(kController, Event::Kind::AudioEnds), kSoon, 2));
}

} // namespace
} // namespace k740::test
