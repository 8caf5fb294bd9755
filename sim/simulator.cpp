#include "sim/simulator.h"

#include "sim/event_json.h"
#include "sim/tone.h"
#include "sim/wav_file.h"

#include <filesystem>
#include <iostream>

namespace k740::sim {
namespace {

constexpr std::chrono::milliseconds kLongestWait{100}; // between looks at signals and the time
constexpr int kToneZone = 1;                           // of a zone controller that streams
constexpr double kToneHertz = 441;                     // whole periods in a second of samples

AudioStream ToneStreamed() {
    AudioStream stream;
    stream.pcm = Tone(kToneHertz, kSampleRate);
    return stream;
}

} // namespace

Simulator::Simulator(const SimOptions& options, const EndSignals& signals)
    : m_options(options), m_signals(signals), m_installation({options.stationAddress, kDefaultStationNode}) {
    OpenEvents();
    const std::chrono::milliseconds period(static_cast<std::int64_t>(options.statusPeriod * 1000));
    for (const DeviceOption& device : options.zoneControllers) { AddZoneController(device, period); }
    for (const DeviceOption& device : options.pagingStations) { AddPagingStation(device, period); }
    for (const DeviceOption& device : options.auxInterfaces) { AddAuxInterface(device); }
}

void Simulator::OpenEvents() {
    if (m_options.eventsFile == "-") { return; }
    m_file.exceptions(std::ios::failbit | std::ios::badbit);
    m_file.open(m_options.eventsFile);
}

void Simulator::AddZoneController(const DeviceOption& device, std::chrono::milliseconds statusPeriod) {
    ZoneController& controller = m_installation.AddZoneController(device.id, device.address);
    controller.RepeatStatus(controller.QuietStatus(), statusPeriod);
    m_zoneControllers.push_back(&controller);
    if (device.group.empty()) { return; }
    controller.SetZoneGroup(kToneZone, device.group);
    NoteStream(device, controller.StreamZone(kToneZone, ToneStreamed()));
}

void Simulator::AddPagingStation(const DeviceOption& device, std::chrono::milliseconds statusPeriod) {
    PagingStation& station = m_installation.AddPagingStation(device.id, device.address);
    station.RepeatStatus({}, statusPeriod);
    if (m_options.acceptCalls) { station.SetCallBehaviour({CallReply::Accept, {}}); }
    m_pagingStations.push_back(&station);
    if (!device.group.empty()) { NoteStream(device, station.Talk({device.group, kAudioPort}, ToneStreamed())); }
}

void Simulator::AddAuxInterface(const DeviceOption& device) {
    AuxInterface& aux = m_installation.AddAuxInterface(device.id, device.address);
    if (!device.group.empty()) { NoteStream(device, aux.Stream({device.group, kAudioPort}, ToneStreamed())); }
}

void Simulator::NoteStream(const DeviceOption& device, AudioSource& source) {
    m_streams.push_back({device.id, {device.group, kAudioPort}, &source});
}

bool Simulator::Run() {
    return RunUntil([this] { return EnoughClosed(); }) || m_options.untilClose == 0;
}

bool Simulator::RunUntil(const std::function<bool()>& condition) {
    Write({{"time", 0.0}, {"event", "ready"}});
    bool holds = false;
    while (!holds && !m_signals.HaveCome() && !TimeIsOver()) {
        WriteNewEvents(kLongestWait);
        holds = condition();
    }
    m_installation.WaitUntil([] { return true; }, kLongestWait); // the devices are through with what they received
    WriteNewEvents(std::chrono::milliseconds(0));
    WriteSummary();
    return holds;
}

bool Simulator::TimeIsOver() const {
    return m_options.duration > 0 && Clock::now() - m_start >= std::chrono::duration<double>(m_options.duration);
}

bool Simulator::EnoughClosed() const {
    return m_options.untilClose > 0 &&
           m_installation.Events().Count(Received(command::kCloseAudio)) >= m_options.untilClose;
}

void Simulator::Write(const nlohmann::ordered_json& line) {
    (m_file.is_open() ? m_file : std::cout) << line << std::endl; // flushed: scripts wait for lines
}

void Simulator::WriteNewEvents(std::chrono::milliseconds timeout) {
    const std::vector<Event> events = m_installation.Events().WaitForMore(m_written, timeout);
    for (const Event& event : events) { Write(ToJson(event, m_start)); }
    m_written += events.size();
}

void Simulator::WriteSummary() {
    if (!m_options.recordDirectory.empty()) { std::filesystem::create_directories(m_options.recordDirectory); }
    for (const ZoneController* controller : m_zoneControllers) {
        for (const Recording& recording : controller->Recordings()) {
            Write(ToJson(recording, controller->Id(), m_start));
        }
        if (!m_options.recordDirectory.empty()) { WriteWavs(*controller); }
    }
    for (const PagingStation* station : m_pagingStations) { WriteIntercom(*station); }
    for (const ToneStream& stream : m_streams) {
        Write(StreamJson(stream.device, stream.group, stream.source->Sent()));
    }
}

void Simulator::WriteWavs(const ZoneController& controller) {
    const std::uint32_t served = controller.ZonesServed();
    for (int zone = 1; zone <= kZones; ++zone) {
        if ((served & (1U << (zone - 1))) == 0) { continue; }
        const std::string path = m_options.recordDirectory + "/zcu" + std::to_string(controller.Id()) + "-zone" +
                                 std::to_string(zone) + ".wav";
        controller.WriteWav(zone, path);
        Write({{"event", "wav"}, {"device", controller.Id()}, {"zone", zone}, {"file", path}});
    }
}

void Simulator::WriteIntercom(const PagingStation& station) {
    const IntercomRecording heard = station.IntercomAudio();
    if (heard.datagrams == 0) { return; }
    Write(ToJson(heard, station.Id()));
    if (m_options.recordDirectory.empty()) { return; }
    const std::string path = m_options.recordDirectory + "/rpk" + std::to_string(station.Id()) + "-intercom.wav";
    WriteWav(path, heard.samples);
    Write({{"event", "wav"}, {"device", station.Id()}, {"file", path}});
}

} // namespace k740::sim
