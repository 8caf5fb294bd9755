// What is shown of audio datagrams: streams of every type, intercom audio, ends of streams.
#include "tests/wireshark/packets.h"

#include <gmock/gmock.h>

namespace k740::test {
namespace {

using ::testing::HasSubstr;

const std::vector<std::string> kAudioFields{kInfo,
                                            kProtocol,
                                            kExpert,
                                            "k740.audio.type",
                                            "k740.audio.samples",
                                            "k740.audio.value_a",
                                            "k740.audio.value_b",
                                            "k740.audio.index_a",
                                            "k740.audio.index_b"};

using AudioTest = DissectorTest;

struct Type {
    std::uint16_t number;
    const char* info; // behind the sender
    const char* samples;
};

class AudioTypeTest : public DissectorTest, public ::testing::WithParamInterface<Type> {};

TEST_P(AudioTypeTest, HasItsSamplesAndTheStateOfTheCoderBehindThem) {
    const Type type = GetParam();
    const Row row = DissectOne(Audio(type.number), kAudioFields, sim::kAudioPort);
    EXPECT_EQ("Audio from 9500, " + std::string(type.info), row.at(kInfo));
    EXPECT_EQ((Row{{kInfo, row.at(kInfo)},
                   {kProtocol, "K740 Audio"},
                   {kExpert, ""},
                   {"k740.audio.type", std::to_string(type.number)},
                   {"k740.audio.samples", type.samples},
                   {"k740.audio.value_a", "-1234"},
                   {"k740.audio.value_b", "567"},
                   {"k740.audio.index_a", "7"},
                   {"k740.audio.index_b", "88"}}),
              row);
}

INSTANTIATE_TEST_SUITE_P(EveryType, AudioTypeTest,
                         ::testing::Values(Type{341, "two-channel ADPCM, 2048 samples, 46.4 ms", "2048"},
                                           Type{342, "two-channel ADPCM, 2048 samples, 46.4 ms", "2048"},
                                           Type{343, "mono ADPCM, 2048 samples, 46.4 ms", "2048"},
                                           Type{344, "mono ADPCM, 2048 samples, 46.4 ms", "2048"},
                                           Type{345, "mono ADPCM, 882 samples, 20.0 ms", "882"},
                                           Type{352, "mono ADPCM, 882 samples, 20.0 ms", "882"},
                                           Type{353, "PCM, 1764 samples, 40.0 ms", "1764"},
                                           Type{354, "PCM, 2048 samples, 46.4 ms", "2048"},
                                           Type{355, "PCM, 882 samples, 20.0 ms", "882"},
                                           Type{356, "PCM, 2048 samples, 46.4 ms", "2048"},
                                           Type{357, "PCM, 882 samples, 20.0 ms", "882"},
                                           Type{359, "mono ADPCM, 1764 samples, 40.0 ms", "1764"},
                                           Type{360, "mono ADPCM, 1764 samples, 40.0 ms", "1764"}),
                         [](const auto& type) { return "Type" + std::to_string(type.param.number); });

TEST_F(AudioTest, TheHeaderHasItsFields) {
    const Row row = DissectOne(
        Audio(345),
        {"k740.magic", "k740.source", "k740.audio.stream", "k740.audio.length", "k740.version", "k740.destination"},
        sim::kAudioPort);
    EXPECT_EQ((Row{{"k740.magic", "0x4a79"},
                   {"k740.source", "9500"},
                   {"k740.audio.stream", "1"},
                   {"k740.audio.length", "520"},
                   {"k740.version", ""},
                   {"k740.destination", ""}}),
              row);
}

TEST_F(AudioTest, TheDurationIsInMilliseconds) {
    const std::string duration =
        DissectOne(Audio(341), {"k740.audio.duration"}, sim::kAudioPort)["k740.audio.duration"];
    EXPECT_NEAR(2048.0 / 44.1, std::stod(duration), 1e-6);
}

TEST_F(AudioTest, ThePayloadIsWhole) {
    const std::string payload = DissectOne(Audio(345), {"k740.audio.payload"}, sim::kAudioPort)["k740.audio.payload"];
    EXPECT_EQ(2U * 441, payload.size());
    EXPECT_EQ("00010203", payload.substr(0, 8));
    EXPECT_EQ("b7b8", payload.substr(payload.size() - 4)); // 439 and 440 as bytes
}

TEST_F(AudioTest, AnEndOfStreamTellsItsController) {
    for (const std::size_t size : {sim::kEndOfStreamSize, sim::kHalfEndOfStreamSize}) {
        const Row row = DissectOne(sim::EndOfStream(kNode, kController, size), {kInfo, kExpert, "k740.destination"},
                                   sim::kAudioPort);
        EXPECT_EQ(
            (Row{{kInfo, "End of stream from 9500 for controller 33"}, {kExpert, ""}, {"k740.destination", "33"}}),
            row);
    }
}

TEST_F(AudioTest, IntercomAudioTellsBothSides) {
    sim::AudioDatagram audio = *sim::ReadAudioDatagram(Audio(341));
    audio.node = kIntercom;
    audio.stream = kStation;
    const Row row =
        DissectOne(sim::Pack(audio), {kInfo, kExpert, "k740.source", "k740.destination"}, sim::kIntercomAudioPort);
    EXPECT_EQ((Row{{kInfo, "Audio from 5500 to 5000, two-channel ADPCM, 2048 samples, 46.4 ms"},
                   {kExpert, ""},
                   {"k740.source", "5500"},
                   {"k740.destination", "5000"}}),
              row);
}

TEST_F(AudioTest, AnUnknownTypeIsMarked) {
    const std::vector<std::uint16_t> types{0, 340, 346, 351, 358, 361, 0x8111, 0x8113};
    std::vector<sim::Bytes> datagrams;
    std::vector<std::string> expected;
    for (const std::uint16_t type : types) {
        sim::AudioDatagram audio = *sim::ReadAudioDatagram(Audio(341));
        audio.type = type;
        datagrams.push_back(sim::Pack(audio));
        expected.push_back("Unknown type of audio " + std::to_string(type));
    }
    EXPECT_EQ(expected, InfosOf(datagrams, sim::kAudioPort));
    EXPECT_EQ(expected, ExpertsOf(datagrams, sim::kAudioPort));
}

TEST_F(AudioTest, TypesAreNamed) {
    EXPECT_THAT(TextOf(Audio(341), sim::kAudioPort), HasSubstr("Type: two-channel ADPCM (341)"));
    EXPECT_THAT(TextOf(sim::EndOfStream(kNode, kController), sim::kAudioPort),
                HasSubstr("Type: end of stream (33042)"));
}

TEST_F(AudioTest, StepIndexesAboveTheLastOneAreMarked) {
    sim::AudioDatagram audio = *sim::ReadAudioDatagram(Audio(341));
    audio.block = {{0, 88}, {0, 89}};
    EXPECT_EQ(std::vector<std::string>{"Step index of the coder above 88"},
              ExpertsOf({sim::Pack(audio)}, sim::kAudioPort));
}

} // namespace
} // namespace k740::test
