// Scenario files: what they say, and what is said of those that are wrong.
#include "sim/scenario.h"
#include "sim/script.h"
#include "sim/wav_file.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <fstream>
#include <sndfile.hh>
#include <vector>

namespace k740::test {
namespace {

using sim::SimOptions;

class ScenarioLoadTest : public ::testing::Test {
protected:
    static SimOptions Load(const std::string& text, SimOptions options = {}) {
        std::ofstream("s.yaml") << text;
        sim::LoadScenario("s.yaml", options);
        return options;
    }
    /// What is wrong with a scenario.
    static std::string Refusal(const std::string& text) {
        try {
            sim::MakeScript(Load(text));
        } catch (const sim::UsageError& error) { return error.what(); }
        return "nothing is wrong";
    }

private:
    const TemporaryDirectory m_directory;
};

constexpr const char* kController = "zone-controllers:\n"
                                    "  - id: 33\n"
                                    "    address: 192.168.1.33\n";

TEST_F(ScenarioLoadTest, ValuesAreTaken) {
    const SimOptions options =
        Load("station: 192.168.9.9\nnode: 9600\nstatus-period: 0.5\nduration: 3\nrecord: heard\n");
    EXPECT_EQ("192.168.9.9", options.stationAddress);
    EXPECT_EQ(9600U, options.stationNode);
    EXPECT_EQ(0.5, options.statusPeriod);
    EXPECT_EQ(3, options.duration);
    EXPECT_EQ("heard", options.recordDirectory);
}

TEST_F(ScenarioLoadTest, WhatTheCommandLineSaysStays) {
    SimOptions options;
    options.duration = 1;
    EXPECT_EQ(1, Load("duration: 3\n", options).duration);
}

TEST_F(ScenarioLoadTest, DevicesAreAddedToThoseOfTheCommandLine) {
    SimOptions options;
    options.devices.push_back({sim::DeviceKind::PagingStation, 5000, "192.168.8.99", "", "--rpk"});
    const SimOptions loaded = Load(kController, options);
    ASSERT_EQ(2U, loaded.devices.size());
    EXPECT_EQ(33U, loaded.devices[1].id);
    EXPECT_EQ("s.yaml:2", loaded.devices[1].place);
}

TEST_F(ScenarioLoadTest, ARangeCountsIdsAndAddressesOn) {
    const SimOptions options =
        Load("zone-controllers:\n  - {id: 1, address: 192.168.1.253, count: 4, reply: refuse}\n");
    ASSERT_EQ(4U, options.devices.size());
    EXPECT_EQ(4U, options.devices[3].id);
    EXPECT_EQ("192.168.1.254", options.devices[1].address);
    EXPECT_EQ("192.168.2.1", options.devices[2].address); // .255 and .0 are left out
    ASSERT_EQ(4U, options.settings.size());
    EXPECT_EQ("reply 4 refuse", options.settings[3].text);
}

TEST_F(ScenarioLoadTest, OtherKeysOfADeviceAreCommandsAboutIt) {
    const SimOptions options = Load(std::string(kController) + "    volumes: 1 2 3 4 5 6 7 8 255 255\n"
                                                               "    fault: [version silent, play-request twice]\n"
                                                               "    remove:\n");
    ASSERT_EQ(4U, options.settings.size());
    EXPECT_EQ("volumes 33 1 2 3 4 5 6 7 8 255 255", options.settings[0].text);
    EXPECT_EQ("fault 33 version silent", options.settings[1].text);
    EXPECT_EQ("fault 33 play-request twice", options.settings[2].text);
    EXPECT_EQ("remove 33", options.settings[3].text);
    EXPECT_EQ("s.yaml:4", options.settings[0].place);
}

TEST_F(ScenarioLoadTest, TimelineEntriesHaveTimes) {
    const SimOptions options = Load("timeline:\n  - {at: 1.5, do: end}\n  - {every: 2, until: 9, do: help}\n");
    ASSERT_EQ(2U, options.timeline.size());
    EXPECT_EQ(1.5, options.timeline[0].at);
    EXPECT_FALSE(options.timeline[0].every);
    EXPECT_EQ(2, options.timeline[1].at); // without "at" first after the period
    EXPECT_EQ(2, options.timeline[1].every);
    EXPECT_EQ(9, options.timeline[1].until);
}

TEST_F(ScenarioLoadTest, ReactionsHaveATriggerADeviceAndADelay) {
    const SimOptions options =
        Load(std::string(kController) + "reactions:\n  - {on: play, device: 33, after: 0.5, do: quiet 33}\n");
    ASSERT_EQ(1U, options.reactions.size());
    EXPECT_EQ("play", options.reactions[0].on);
    EXPECT_EQ(33U, options.reactions[0].device);
    EXPECT_EQ(0.5, options.reactions[0].after);
    EXPECT_EQ(1U, sim::MakeScript(options).reactions.size());
}

TEST_F(ScenarioLoadTest, WhatIsWrongIsToldWithItsLine) {
    const std::string controller = kController;
    EXPECT_EQ("s.yaml:1: \"stations\" is not known here", Refusal("stations: 1\n"));
    EXPECT_EQ("s.yaml:2: \"node\" is there twice", Refusal("node: 9500\nnode: 9501\n"));
    EXPECT_EQ("s.yaml:1: a whole number in 9500..9999 is expected here", Refusal("node: 9499\n"));
    EXPECT_EQ("s.yaml:2: a time in seconds is expected here", Refusal("node: 9500\nduration: -1\n"));
    EXPECT_EQ("s.yaml:2: the device has no address", Refusal("zone-controllers:\n  - id: 33\n"));
    EXPECT_EQ("s.yaml:2: zone controller 1000: the ID is not in 1..999",
              Refusal("zone-controllers:\n  - {id: 1000, address: 192.168.1.33}\n"));
    EXPECT_EQ("s.yaml:2: no device address: \"224.0.0.1\"",
              Refusal("zone-controllers:\n  - {id: 33, address: 224.0.0.1}\n"));
    EXPECT_EQ("s.yaml:4: zone controller 33: the ID is there twice",
              Refusal(controller + "  - {id: 33, address: 192.168.1.34}\n"));
    EXPECT_EQ("s.yaml:4: \"colour\" is not known here", Refusal(controller + "    colour: red\n"));
    EXPECT_EQ("s.yaml:4: the reply \"maybe\" is none of accept, accept-without-join, accept-255, refuse, silent, "
              "join-refused, join-never",
              Refusal(controller + "    reply: maybe\n"));
    EXPECT_EQ("s.yaml:5: \"sing\" is no command", Refusal(controller + "timeline:\n  - {at: 1, do: sing 33}\n"));
    EXPECT_EQ("s.yaml:6: there is no device 34", Refusal(controller + "timeline:\n  - at: 1\n    do: remove 34\n"));
    EXPECT_EQ("s.yaml:5: the entry has no \"do\"", Refusal(controller + "timeline:\n  - at: 1\n"));
    EXPECT_EQ("s.yaml:5: the entry has neither \"at\" nor \"every\"", Refusal(controller + "timeline:\n  - do: end\n"));
    EXPECT_EQ("s.yaml:5: the period is below 0.01 s", Refusal(controller + "timeline:\n  - {every: 0, do: end}\n"));
    EXPECT_EQ("s.yaml:5: \"dance\" is nothing to react on",
              Refusal(controller + "reactions:\n  - {on: dance, do: end}\n"));
    EXPECT_EQ("s.yaml:5: there is no device 34",
              Refusal(controller + "reactions:\n  - {on: play, device: 34, do: end}\n"));
    EXPECT_EQ("s.yaml:5: the entry ends before it begins",
              Refusal(controller + "timeline:\n  - {at: 2, every: 1, until: 1, do: end}\n"));
    EXPECT_EQ("s.yaml:2: no device address: \"\"", Refusal("node: 9500\nstation: \"\"\n"));
    EXPECT_EQ("s.yaml:1: a time in seconds is expected here", Refusal("duration: .nan\n"));
    EXPECT_EQ("the status period is below 1 ms", Refusal("status-period: 0.0009\n"));
    EXPECT_EQ("s.yaml:3: the address 192.168.9.9 is the host's",
              Refusal("station: 192.168.9.9\nzone-controllers:\n  - {id: 33, address: 192.168.9.9}\n"));
    EXPECT_EQ("s.yaml:2: a list is expected here", Refusal("zone-controllers:\n  id: 33\n"));
    EXPECT_EQ("s.yaml:2: client 9500: the ID is the host's",
              Refusal("clients:\n  - {id: 9500, address: 192.168.4.1}\n"));
}

TEST_F(ScenarioLoadTest, ZerosBeforeANumberMeanNothing) {
    EXPECT_EQ(33U, Load("zone-controllers:\n  - {id: 033, address: 192.168.1.33}\n").devices.at(0).id);
}

TEST_F(ScenarioLoadTest, ASecondDocumentIsRefused) {
    EXPECT_EQ("s.yaml:3: there is a second document", Refusal("duration: 1\n---\nduration: 2\n"));
}

TEST_F(ScenarioLoadTest, TextThatIsNoYamlIsToldWithItsLine) {
    EXPECT_TRUE(Refusal("node: 9500\nclients: [\n").starts_with("s.yaml:")) << Refusal("node: 9500\nclients: [\n");
}

TEST_F(ScenarioLoadTest, FileThatIsNotThereIsNamed) {
    SimOptions options;
    try {
        sim::LoadScenario("none.yaml", options);
        FAIL();
    } catch (const sim::UsageError& error) { EXPECT_STREQ("none.yaml: the file cannot be read", error.what()); }
}

TEST_F(ScenarioLoadTest, WavFilesAreReadBeforeTheRun) {
    const std::string text = std::string(kController) + "timeline:\n  - {at: 1, do: talk 33 225.1.1.1 tone.wav}\n";
    EXPECT_TRUE(Refusal(text).starts_with("s.yaml:5: cannot read tone.wav: ")) << Refusal(text);
    SndfileHandle("tone.wav", SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 8000).writeSync();
    EXPECT_EQ("s.yaml:5: tone.wav is no 16 bit mono file at 44.1 kHz", Refusal(text));
    SndfileHandle("tone.wav", SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2, 44100).writeSync();
    EXPECT_EQ("s.yaml:5: tone.wav is no 16 bit mono file at 44.1 kHz", Refusal(text));
    sim::WriteWav("tone.wav", {});
    EXPECT_EQ("s.yaml:5: tone.wav holds no samples", Refusal(text));
    sim::WriteWav("tone.wav", std::vector<std::int16_t>(100));
    EXPECT_EQ("nothing is wrong", Refusal(text));
}

TEST_F(ScenarioLoadTest, ANamedPipeIsNoWavFile) {
    ASSERT_EQ(0, ::mkfifo("pipe.wav", 0600));
    EXPECT_EQ("s.yaml:5: cannot read pipe.wav: it is no plain file",
              Refusal(std::string(kController) + "timeline:\n  - {at: 1, do: talk 33 225.1.1.1 pipe.wav}\n"));
}

} // namespace
} // namespace k740::test
