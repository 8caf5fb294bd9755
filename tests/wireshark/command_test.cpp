// What is shown of each command packet: the Info column, the fields, their names and values.
#include "sim/paging_records.h"
#include "sim/query_records.h"
#include "sim/records.h"
#include "sim/zone_groups.h"
#include "tests/wireshark/packets.h"

#include <gmock/gmock.h>

namespace k740::test {
namespace {

using ::testing::HasSubstr;

using CommandTest = DissectorTest;

sim::PlayRequest SomePlay() {
    sim::PlayRequest play;
    play.sequence = 17;
    play.priority = 256 - 70;
    play.dryContactMask = 5;
    play.word9 = 9;
    play.auxPort = 1001;
    play.taskId = 1001;
    play.recovery = 1;
    play.zoneMask = 0x87;
    play.group = "225.0.0.1";
    play.groupPort = 28100;
    play.origin = kNode;
    return play;
}

/// Expects the fields of a row to have these values.
void ExpectFields(const sim::Bytes& packet, const Row& expected) {
    std::vector<std::string> names;
    for (const auto& [name, value] : expected) { names.push_back(name); }
    CaptureFile(kCapture).Add(packet, kHost, kDevice);
    const std::vector<Row> rows = Dissect(kCapture, names);
    ASSERT_EQ(1U, rows.size());
    EXPECT_EQ(expected, rows.front());
}

TEST_F(CommandTest, TheHeaderHasItsFields) {
    ExpectFields(Request(0x0303), {{"k740.magic", "0x4a79"},
                                   {"k740.version", "3"},
                                   {"k740.source", "9500"},
                                   {"k740.destination", "33"},
                                   {"k740.command", "0x0303"},
                                   {"k740.length", "0"},
                                   {kProtocol, "K740"},
                                   {kExpert, ""}});
}

TEST_F(CommandTest, TheHeaderNamesTheKindsOfDevices) {
    const std::string text = TextOf(Request(0x0303));
    EXPECT_THAT(text, HasSubstr("Source: host (9500)"));
    EXPECT_THAT(text, HasSubstr("Destination: zone controller (33)"));
    EXPECT_THAT(TextOf(Command(7001, 5000, 0x0303)), HasSubstr("Source: AUX interface (7001)"));
    EXPECT_THAT(TextOf(Command(7001, 5000, 0x0303)), HasSubstr("Destination: paging station or intercom (5000)"));
}

TEST_F(CommandTest, CloseAudioTellsItsTask) {
    const sim::Bytes packet = Request(0x0101, sim::ByteWriter().Put(1001U).Put(3U).Get());
    ExpectFields(packet, {{kInfo, "Close audio, task 1001"},
                          {"k740.close_audio.task", "1001"},
                          {"k740.close_audio.kind", "3"},
                          {kExpert, ""}});
}

TEST_F(CommandTest, CloseZonesTellsItsZones) {
    const sim::Bytes packet = Request(0x0102, sim::ByteWriter().Put(0xFFU).Fill(8, 0).Get());
    ExpectFields(packet, {{kInfo, "Close zones, zones 1-8"}, {"k740.close_zones.zones", "0x000000ff"}, {kExpert, ""}});
    EXPECT_EQ("Close zones, zones none", InfoOf(Request(0x0102, sim::Bytes(12, 0))));
    EXPECT_EQ("Close zones, zones 1,3-4,32",
              InfoOf(Request(0x0102, sim::ByteWriter().Put(0x8000000DU).Fill(8, 0).Get())));
}

TEST_F(CommandTest, OneVolumeOfAControllerOfVersionTwo) {
    ExpectFields(Request(0x0109, {2, 14}), {{kInfo, "Set volume (V2), channel 2, volume 5"},
                                            {"k740.volume.channel", "2"},
                                            {"k740.volume.attenuation", "14"},
                                            {"k740.volume.level", "5"},
                                            {kExpert, ""}});
    EXPECT_EQ("Set volume (V2) answer", InfoOf(Answer(0x8109, {1})));
}

TEST_F(CommandTest, TheVolumesOfAControllerOfVersionTwo) {
    EXPECT_EQ("Read volumes (V2)", InfoOf(Request(0x0127)));
    ExpectFields(Answer(0x8127, {1, 0, 19, 255, 5, 0, 0}), {{kInfo, "Volumes (V2): 19 0 - 14"},
                                                            {"k740.volume.valid", "1"},
                                                            {"k740.volume.attenuation", "0;19;255;5"},
                                                            {"k740.volume.level", "19;0;14"},
                                                            {"k740.volume.extra", "0000"},
                                                            {kExpert, ""}});
}

TEST_F(CommandTest, TheVolumesOfAControllerOfVersionThree) {
    EXPECT_EQ("Set volumes (V3): 19 18 - - - - - 0",
              InfoOf(Request(0x0301, {0, 1, 255, 255, 255, 255, 255, 19, 255, 255, 255})));
    EXPECT_EQ("Set volumes (V3) answer", InfoOf(Answer(0x8301)));
    EXPECT_EQ("Read volumes (V3)", InfoOf(Request(0x0302)));
    ExpectFields(Answer(0x8302, {1, 0, 1, 2, 3, 4, 5, 6, 7, 255, 255, 9}),
                 {{kInfo, "Volumes (V3): 19 18 17 16 15 14 13 12 - -"},
                  {"k740.volume.attenuation", "0;1;2;3;4;5;6;7;255;255"},
                  {"k740.volume.extra", "09"},
                  {kExpert, ""}});
    EXPECT_THAT(TextOf(Answer(0x8302, {1, 0, 1, 2, 3, 4, 5, 6, 7, 255, 255, 9})),
                HasSubstr("Channel 2: Attenuation: 1"));
}

TEST_F(CommandTest, VoiceAlarmHasTheHostsPriority) {
    const sim::Bytes payload = sim::ByteWriter().Put(kNode).Put<std::uint16_t>(256 - 255).Get();
    ExpectFields(Request(0x0123, payload), {{kInfo, "Voice alarm on, priority 255"},
                                            {"k740.voice_alarm.host", "9500"},
                                            {"k740.voice_alarm.priority", "255"},
                                            {kExpert, ""}});
    EXPECT_EQ("Voice alarm off, priority 255", InfoOf(Request(0x0124, payload)));
}

TEST_F(CommandTest, AHeartbeatAndItsAnswer) {
    ExpectFields(Request(0x0125, sim::ByteWriter().Put(kNode).Get()),
                 {{kInfo, "Heartbeat"}, {"k740.heartbeat.host", "9500"}, {kExpert, ""}});
    ExpectFields(Answer(0x8125, sim::ByteWriter().Put<std::uint16_t>(1).Put(kVirtualController).Get()),
                 {{kInfo, "Heartbeat answer"},
                  {"k740.heartbeat.result", "1"},
                  {"k740.heartbeat.controller", "200"},
                  {kExpert, ""}});
}

sim::StatusReport SomeStatus() {
    sim::StatusReport status;
    status.deviceStatus = 4;
    status.zoneStates = {4, 5, 8, 0x26, 5, 6, 7, 9};
    status.amplifierStates = {1, 2, 3, 4, 5, 6, 7, 8};
    status.deviceIdEcho = kController;
    status.deviceFault = 2;
    status.zoneValues = {0, 9500U << 16 | 1001, 0, 0, 9501U << 16 | 3, 0, 0, 0};
    status.bytes50To56 = {0x50, 0x51, 0x52, 0x53, 0x54, 0x55, 0x56};
    status.zoneFlags = 0x06;
    status.extraA = 58;
    status.extraB = 59;
    status.bytes64To79.fill(0x64);
    status.trailingWord = 80;
    status.trailingByte = 84;
    return status;
}

TEST_F(CommandTest, AStatusTellsZonesAmplifiersAndFaults) {
    ExpectFields(Answer(0x8126, Payload(SomeStatus())),
                 {{kInfo, "Status, device state 4, playing zones 2,5, fault 2, faulty zones 2-3"},
                  {"k740.status.device", "4"},
                  {"k740.status.zone", "4;5;8;38;5;6;7;9"},
                  {"k740.status.amplifier", "1;2;3;4;5;6;7;8"},
                  {"k740.status.controller", "33"},
                  {"k740.status.fault", "2"},
                  {"k740.status.zone_task", "0;1001;0;0;3;0;0;0"},
                  {"k740.status.zone_source", "0;9500;0;0;9501;0;0;0"},
                  {"k740.status.bytes50", "50515253545556"},
                  {"k740.status.zone_faults", "0x06"},
                  {"k740.status.extra_a", "58"},
                  {"k740.status.extra_b", "59"},
                  {"k740.status.bytes64", "64646464646464646464646464646464"},
                  {"k740.status.word80", "80"},
                  {"k740.status.byte84", "84"},
                  {kExpert, ""}});
}

TEST_F(CommandTest, AStatusNamesTheStatesOfZones) {
    const std::string text = TextOf(Answer(0x8126, Payload(SomeStatus())));
    for (const char* line : {"Zone 1: State: idle (4)", "Zone 2: State: playing (5)", "Zone 3: State: Unknown (8)",
                             "Zone 4: State: Unknown (38)", "Amplifier 8: State: 8", "Zone 2: Task: 1001",
                             "Zone 2: Source: 9500", "Zones with a fault: 0x06 (2-3)"}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
}

TEST_F(CommandTest, AVersionTellsItsTexts) {
    EXPECT_EQ("Read version, device 33", InfoOf(Request(0x0132, sim::ByteWriter().Put(kController).Get())));
    ExpectFields(Answer(0x8132, Payload(sim::Version{"5.10.0", "2.0.1", "1.3.0"})),
                 {{kInfo, "Version, application 2.0.1, MCU 1.3.0, kernel 5.10.0"},
                  {"k740.version.kernel", "5.10.0"},
                  {"k740.version.application", "2.0.1"},
                  {"k740.version.mcu", "1.3.0"},
                  {kExpert, ""}});
    EXPECT_EQ("Version, application ?, MCU , kernel ", InfoOf(Answer(0x8132, [] {
                  sim::Bytes payload(118, 0);
                  payload[36] = 0xFF; // no letter
                  return payload;
              }())));
}

TEST_F(CommandTest, APlayRequestTellsWhatIsPlayedWhere) {
    ExpectFields(Request(0x0205, Payload(SomePlay())),
                 {{kInfo, "Play request, task 1001, zones 1-3,8, 225.0.0.1:28100, priority 70"},
                  {"k740.play.sequence", "17"},
                  {"k740.play.priority", "70"},
                  {"k740.play.contact_switch", "1"},
                  {"k740.play.contact_on", "1"},
                  {"k740.play.contact_zones", "0x05"},
                  {"k740.play.word9", "9"},
                  {"k740.play.source", "1001"},
                  {"k740.play.task", "1001"},
                  {"k740.play.kind", "3"},
                  {"k740.play.recovery", "1"},
                  {"k740.play.all", "0xffff"},
                  {"k740.play.zones", "0x00000087"},
                  {"k740.play.stream_kind", "32"},
                  {"k740.play.group", "225.0.0.1"},
                  {"k740.play.port", "28100"},
                  {"k740.play.sender", "9500"},
                  {kExpert, ""}});
}

TEST_F(CommandTest, APlayRequestOfAnAuxTaskTellsItsDevice) {
    sim::PlayRequest play = SomePlay();
    play.auxPort = 4;
    play.origin = kAux;
    EXPECT_EQ("Play request, task 1001, AUX 7001 port 4, zones 1-3,8, 225.0.0.1:28100, priority 70",
              InfoOf(Request(0x0205, Payload(play))));
}

TEST_F(CommandTest, APlayAnswerTellsItsResult) {
    sim::PlayAnswer answer;
    answer.sequence = 17;
    answer.tokenA = 0xA1;
    answer.tokenB = 0xB1;
    answer.taskId = 1001;
    ExpectFields(Answer(0x8205, Payload(answer)), {{kInfo, "Play answer, task 1001, accepted, join report follows"},
                                                   {"k740.play.join_follows", "1"},
                                                   {"k740.play.result", "1"},
                                                   {"k740.play.sequence", "17"},
                                                   {"k740.play.token_a", "0x000000a1"},
                                                   {"k740.play.token_b", "0x000000b1"},
                                                   {"k740.play.echo", "eeeeeeeeeeeeeeee"},
                                                   {"k740.play.task", "1001"},
                                                   {"k740.play.trailing", "eeeeeeee"},
                                                   {kExpert, ""}});
    answer.result = 255;
    EXPECT_EQ("Play answer, task 1001, accepted without a join report", InfoOf(Answer(0x8205, Payload(answer))));
    answer.result = 2;
    EXPECT_EQ("Play answer, task 1001, refused with 2", InfoOf(Answer(0x8205, Payload(answer))));
    EXPECT_EQ(std::vector<std::string>{"Refused"}, ExpertsOf({Answer(0x8205, Payload(answer))}));
}

TEST_F(CommandTest, AJoinReportTellsItsStatus) {
    ExpectFields(Answer(0x8206, Payload(sim::JoinReport{1, 0xA1, 0xB1})), {{kInfo, "Join report, joined"},
                                                                           {"k740.play.join", "1"},
                                                                           {"k740.play.token_a", "0x000000a1"},
                                                                           {"k740.play.token_b", "0x000000b1"},
                                                                           {kExpert, ""}});
    EXPECT_EQ("Join report, not joined, status 2", InfoOf(Answer(0x8206, Payload(sim::JoinReport{2, 0xA1, 0xB1}))));
    EXPECT_EQ(std::vector<std::string>{"Refused"},
              ExpertsOf({Answer(0x8206, Payload(sim::JoinReport{2, 0xA1, 0xB1}))}));
}

TEST_F(CommandTest, TheGroupsOfTheZonesOfAController) {
    sim::ZoneGroups groups;
    groups.Set(1, "225.1.0.1", 28100);
    groups.Set(8, "225.1.0.8", 7);
    EXPECT_EQ("Read groups of the zones", InfoOf(Request(0x0303)));
    ExpectFields(Answer(0x8303, groups.Payload()),
                 {{kInfo, "Groups of the zones, zone 1 225.1.0.1, zone 8 225.1.0.8"},
                  {"k740.groups.group", "225.1.0.1;0.0.0.0;0.0.0.0;0.0.0.0;0.0.0.0;0.0.0.0;0.0.0.0;225.1.0.8"},
                  {"k740.groups.word", "28100;0;0;0;0;0;0;7"},
                  {"k740.groups.valid", ""},
                  {kExpert, ""}});
}

TEST_F(CommandTest, TheGroupsOfTheZonesOfAVirtualController) {
    sim::ZoneGroups groups;
    groups.SetLayout(sim::ZoneGroupLayout::Virtual);
    groups.Set(1, "225.0.0.1", 28100);
    ExpectFields(Answer(0x8303, groups.Payload(), kVirtualController),
                 {{kInfo, "Groups of the zones, zone 1 225.0.0.1"},
                  {"k740.groups.group", "225.0.0.1;0.0.0.0;0.0.0.0;0.0.0.0;0.0.0.0;0.0.0.0;0.0.0.0;0.0.0.0"},
                  {"k740.groups.valid", "1"},
                  {kExpert, ""}});
    groups.Set(1, "", 0);
    EXPECT_EQ("Groups of the zones, none", InfoOf(Answer(0x8303, groups.Payload(), kVirtualController)));
}

TEST_F(CommandTest, AMonitorRequestTellsItsZone) {
    const sim::Bytes payload = sim::ByteWriter().Put(kController).Put<std::uint16_t>(7).Put<std::uint8_t>(1).Get();
    ExpectFields(Request(0x030A, payload, kStation), {{kInfo, "Monitor a zone, start, controller 33, zone 8"},
                                                      {"k740.monitor.controller", "33"},
                                                      {"k740.monitor.zone", "8"},
                                                      {"k740.monitor.start", "1"},
                                                      {kExpert, ""}});
    EXPECT_EQ("Monitor answer, success", InfoOf(Answer(0x830A, sim::MonitorAnswerPayload(1), kStation)));
    EXPECT_EQ("Monitor answer, refused with -3", InfoOf(Answer(0x830A, sim::MonitorAnswerPayload(-3), kStation)));
}

TEST_F(CommandTest, ZonesThatJoinATaskLaterHaveTheirKey) {
    sim::Bytes payload(28, 0xAB);
    payload[16] = 0xCD;
    ExpectFields(Command(7001, kVirtualController, 0x0313, payload),
                 {{kInfo, "Zones join a task"},
                  {"k740.extension.key", "abababababababababababababababab"},
                  {"k740.extension.value", "cdababababababababababab"},
                  {kExpert, ""}});
    EXPECT_EQ("Zones leave a task", InfoOf(Command(7001, kVirtualController, 0x0314, payload)));
    EXPECT_EQ("Zones join a task answer, done", InfoOf(Command(kNode, 7001, 0x8313, {1})));
    EXPECT_EQ("Zones leave a task answer, not found", InfoOf(Command(kNode, 7001, 0x8314, {0})));
}

TEST_F(CommandTest, AHeartbeatOfAStationIsNoHandshake) {
    ExpectFields(Request(0x0700, sim::ByteWriter().Put(kNode).Get(), kStation),
                 {{kInfo, "Heartbeat of a station"}, {"k740.station.host", "9500"}, {kExpert, ""}});
    ExpectFields(Command(kStation, kIntercom, 0x0700, sim::HandshakePayload()),
                 {{kInfo, "Handshake with an intercom, 5000 to 5500"}, {"k740.station.host", ""}, {kExpert, ""}});
}

TEST_F(CommandTest, AStatusOfAStationIsNoHandshakeAnswer) {
    sim::PagingStatus status;
    status.state = 2;
    status.status1 = 7;
    status.bytes2To3 = {0x22, 0x33};
    status.wordA = 45;
    status.wordB = 67;
    status.status8 = 8;
    ExpectFields(Answer(0x8700, Payload(status), kStation), {{kInfo, "Status of a station, state 2, activity 7"},
                                                             {"k740.station.state", "2"},
                                                             {"k740.station.activity", "7"},
                                                             {"k740.station.bytes2", "2233"},
                                                             {"k740.station.word_a", "45"},
                                                             {"k740.station.word_b", "67"},
                                                             {"k740.station.extra", "8"},
                                                             {kExpert, ""}});
    ExpectFields(
        Command(kIntercom, kStation, 0x8700, {0, 1, 0, 0, 0, 0, 0, 0, 0}),
        {{kInfo, "Handshake answer, 5500 to 5000, intercom talks"}, {"k740.intercom.status", "1"}, {kExpert, ""}});
}

TEST_F(CommandTest, AnIntercomCallAndItsAnswers) {
    EXPECT_EQ("Intercom call, 5500 to 5000", InfoOf(Command(kIntercom, kStation, 0x0701, sim::Bytes(8, 0))));
    EXPECT_EQ("Intercom answer, 5000 to 5500, rings",
              InfoOf(Command(kStation, kIntercom, 0x8701, sim::CallAnswerPayload(0))));
    EXPECT_EQ("Intercom answer, 5000 to 5500, accepted",
              InfoOf(Command(kStation, kIntercom, 0x8701, sim::CallAnswerPayload(1))));
    ExpectFields(
        Command(kStation, kIntercom, 0x8701, sim::CallAnswerPayload(2)),
        {{kInfo, "Intercom answer, 5000 to 5500, hung up or busy"}, {"k740.intercom.answer", "2"}, {kExpert, ""}});
}

sim::Bytes StationTask(bool start, std::uint8_t taskPriority, const std::string& zones) {
    sim::ByteWriter writer;
    writer.Put(7U).Put<std::uint8_t>(start ? 1 : 0).Put(taskPriority).Fill(20, 0).PutAll(zones);
    return writer.Get();
}

TEST_F(CommandTest, ATaskOfAStationTellsItsZones) {
    ExpectFields(Request(0x0702, StationTask(true, 90, "021FF02203"), kStation),
                 {{kInfo, "Task of a station, start 7, priority 90, 33 zones 1-8; 34 zones 1-2"},
                  {"k740.paging_task.task", "7"},
                  {"k740.paging_task.start", "1"},
                  {"k740.paging_task.priority", "90"},
                  {"k740.paging_task.zones", "021FF02203"},
                  {kExpert, ""}});
    EXPECT_EQ("Task of a station, stop 7, priority 100",
              InfoOf(Request(0x0702, StationTask(false, 100, ""), kStation)));
    EXPECT_EQ("Task of a station, start 7, priority 90, ?",
              InfoOf(Request(0x0702, StationTask(true, 90, "1021FF"), kStation))); // an ID of four digits
    EXPECT_EQ("Task answer of a station, success",
              InfoOf(Answer(0x8702, Payload(sim::PagingTaskAnswer{7, 1}), kStation)));
    EXPECT_EQ("Task answer of a station, refused with 5",
              InfoOf(Answer(0x8702, Payload(sim::PagingTaskAnswer{7, 5}), kStation)));
}

TEST_F(CommandTest, FieldsAreFoundByTheirNames) {
    CaptureFile(kCapture).Add(Request(0x0205, Payload(SomePlay())), kHost, kDevice);
    const std::string task = "-Y 'k740.command == 0x0205 && k740.play.task == 1001 && k740.play.group == 225.0.0.1'";
    EXPECT_EQ(1U, Dissect(kCapture, {kFrame}, task).size());
    EXPECT_EQ(0U, Dissect(kCapture, {kFrame}, "-Y 'k740.play.task == 1002'").size());
}

} // namespace
} // namespace k740::test
