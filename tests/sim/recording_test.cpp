#include "sim/recording.h"
#include "tests/sim/station.h"

#include <gtest/gtest.h>

namespace k740::sim {
namespace {

using std::chrono::milliseconds;
using test::AudioBytes;
using test::EndOfStreamBytes;

PlayRequest ForZones(std::uint32_t mask) {
    PlayRequest request;
    request.zoneMask = mask;
    return request;
}

Datagram At(const Bytes& bytes, int ms = 0) {
    return {bytes, {}, Clock::time_point(milliseconds(ms))};
}

TEST(RecordingTest, StreamFromItsBeginningHasNeitherGapsNorRepeats) {
    Recorder recorder(33, ForZones(1), Keep::Samples);
    AdpcmState sender;
    for (const std::uint8_t code : Bytes{0x12, 0xA5, 0x34}) { recorder.Take(At(AudioBytes(code, sender))); }
    EXPECT_EQ(3U, recorder.Get().datagrams);
    EXPECT_EQ(0U, recorder.Get().gaps);
    EXPECT_EQ(0U, recorder.Get().repeats);
    EXPECT_EQ(9500U, recorder.Get().node);
    EXPECT_EQ(3U * 2048, recorder.Get().samples.size());
}

TEST(RecordingTest, LostDatagramIsOneGap) {
    Recorder recorder(33, ForZones(1), Keep::Counts);
    AdpcmState sender;
    recorder.Take(At(AudioBytes(0x12, sender)));
    AudioBytes(0xA5, sender);
    recorder.Take(At(AudioBytes(0x34, sender)));
    recorder.Take(At(AudioBytes(0x56, sender)));
    EXPECT_EQ(1U, recorder.Get().gaps);
}

TEST(RecordingTest, LostBeginningIsAGap) {
    Recorder recorder(33, ForZones(1), Keep::Counts);
    AdpcmState sender;
    AudioBytes(0x12, sender);
    recorder.Take(At(AudioBytes(0xA5, sender)));
    EXPECT_EQ(1U, recorder.Get().gaps);
}

TEST(RecordingTest, DatagramHeardTwiceIsARepeatAndNoGap) {
    Recorder recorder(33, ForZones(1), Keep::Counts);
    AdpcmState sender;
    const Bytes bytes = AudioBytes(0x12, sender);
    recorder.Take(At(bytes));
    recorder.Take(At(bytes));
    recorder.Take(At(AudioBytes(0x34, sender)));
    EXPECT_EQ(3U, recorder.Get().datagrams);
    EXPECT_EQ(1U, recorder.Get().repeats);
    EXPECT_EQ(0U, recorder.Get().gaps);
}

TEST(RecordingTest, EndsOfStreamAreSortedByTheirController) {
    Recorder recorder(33, ForZones(1), Keep::Counts);
    EXPECT_EQ(Recorder::Kind::Other, recorder.Take(At(EndOfStreamBytes(34), 100)));
    EXPECT_EQ(Recorder::Kind::EndOfStream, recorder.Take(At(EndOfStreamBytes(33), 101)));
    EXPECT_EQ(Recorder::Kind::EndOfStream, recorder.Take(At(EndOfStreamBytes(33), 121)));
    EXPECT_EQ(1U, recorder.Get().endsOfOthers);
    ASSERT_EQ(2U, recorder.Get().endsOfStream.size());
    EXPECT_EQ(milliseconds(20), recorder.Get().endsOfStream[1] - recorder.Get().endsOfStream[0]);
}

TEST(RecordingTest, AudioAfterTheEndIsCountedAsSuch) {
    Recorder recorder(33, ForZones(1), Keep::Counts);
    AdpcmState sender;
    recorder.Take(At(AudioBytes(0x12, sender)));
    recorder.Take(At(EndOfStreamBytes(33)));
    recorder.Take(At(AudioBytes(0x34, sender)));
    EXPECT_EQ(1U, recorder.Get().afterEnd);
}

TEST(RecordingTest, ForeignDatagramsAreCountedOnly) {
    Recorder recorder(33, ForZones(1), Keep::Samples);
    EXPECT_EQ(Recorder::Kind::Other, recorder.Take(At(Bytes{1, 2, 3})));
    EXPECT_EQ(1U, recorder.Get().foreign);
    EXPECT_EQ(0U, recorder.Get().datagrams);
}

TEST(RecordingTest, TimesOfAudioAreKept) {
    Recorder recorder(33, ForZones(1), Keep::Counts);
    AdpcmState sender;
    for (const int ms : {1000, 1046, 1146, 1192}) { recorder.Take(At(AudioBytes(0x12, sender), ms)); }
    EXPECT_EQ(milliseconds(192), *recorder.Get().lastAudio - *recorder.Get().firstAudio);
    EXPECT_EQ(milliseconds(100), recorder.Get().longestPause);
}

TEST(RecordingTest, ZonesHearFromTheirBeginningToTheirEnd) {
    Recorder recorder(33, ForZones(0b001), Keep::Samples);
    AdpcmState sender;
    recorder.Take(At(AudioBytes(0x12, sender)));
    recorder.SetZones(0b011);
    recorder.Take(At(AudioBytes(0xA5, sender)));
    recorder.SetZones(0b010);
    recorder.Take(At(AudioBytes(0x34, sender)));
    const Recording& heard = recorder.Get();
    EXPECT_EQ(std::vector(heard.samples.begin(), heard.samples.begin() + 4096), heard.HeardIn(1));
    EXPECT_EQ(std::vector(heard.samples.begin() + 2048, heard.samples.end()), heard.HeardIn(2));
    EXPECT_TRUE(heard.HeardIn(3).empty());
}

TEST(RecordingTest, KeepsWhatItIsTold) {
    AdpcmState sender;
    const Bytes bytes = AudioBytes(0x12, sender);
    Recorder counts(33, ForZones(1), Keep::Counts);
    Recorder samples(33, ForZones(1), Keep::Samples);
    Recorder datagrams(33, ForZones(1), Keep::SamplesAndDatagrams);
    for (Recorder* recorder : {&counts, &samples, &datagrams}) { recorder->Take(At(bytes)); }
    EXPECT_TRUE(counts.Get().samples.empty());
    EXPECT_TRUE(samples.Get().rawDatagrams.empty());
    EXPECT_EQ(2048U, datagrams.Get().samples.size());
    EXPECT_EQ(std::vector<Bytes>{bytes}, datagrams.Get().rawDatagrams);
}

} // namespace
} // namespace k740::sim
