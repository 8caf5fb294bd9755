#include "sim/simulator.h"

#include "sim/event_json.h"
#include "sim/tone.h"
#include "sim/wav_file.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace k740::sim {
namespace {

constexpr std::chrono::milliseconds kLongestWait{100}; // between looks at signals and the time
constexpr std::chrono::milliseconds kMostSpread{5};    // from one device's first report to the next one's
constexpr std::size_t kMostWaitingEvents = 20'000;     // some 25 MB, when nobody reads what is written
constexpr int kToneZone = 1;                           // of a zone controller that streams
constexpr double kToneHertz = 441;                     // whole periods in a second of samples

AudioStream ToneStreamed() {
    AudioStream stream;
    stream.pcm = Tone(kToneHertz, kSampleRate);
    return stream;
}

std::chrono::milliseconds Milliseconds(Seconds time) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(time);
}

} // namespace

Simulator::Simulator(const SimOptions& options, Script script, FileDescriptor events, EndSignals& signals)
    : m_options(options), m_script(std::move(script)), m_signals(signals),
      m_statusPeriod(Milliseconds(Seconds(options.statusPeriod.value_or(2)))),
      m_writer(std::move(events), options.periodicLines, m_start),
      m_installation(
          {options.stationAddress.value_or(kStationAddress), options.stationNode.value_or(kDefaultStationNode)}),
      m_timeline(m_script.timeline, m_stage) {
    m_installation.Events().SetBound(kMostWaitingEvents);
    m_installation.OnReactor().CatchFailures();
    if (!m_options.host.empty()) { m_tap = std::make_unique<CableTap>(); }
    AddDevices();
    ApplySettings();
    StartDevices();
}

Simulator::~Simulator() {
    m_installation.OnReactor().Stop(); // nothing runs any more that uses what is gone before the installation
}

void Simulator::AddDevices() {
    for (const DeviceOption& device : m_options.devices) {
        switch (device.kind) {
        case DeviceKind::ZoneController:
            AddZoneController(device);
            break;
        case DeviceKind::PagingStation:
            AddPagingStation(device);
            break;
        case DeviceKind::AuxInterface:
            m_installation.AddAuxInterface(device.id, device.address);
            break;
        case DeviceKind::Client:
            m_installation.AddClient(device.id, device.address);
            break;
        }
    }
}

void Simulator::AddZoneController(const DeviceOption& device) {
    ZoneController& controller = m_installation.AddZoneController(device.id, device.address);
    controller.SetKeep(Keep::Counts);
    if (m_options.recordDirectory) {
        controller.RecordTo(*m_options.recordDirectory + "/zcu" + std::to_string(device.id) + '-');
    }
    m_zoneControllers[device.id] = &controller;
}

void Simulator::AddPagingStation(const DeviceOption& device) {
    PagingStation& station = m_installation.AddPagingStation(device.id, device.address);
    if (m_options.recordDirectory) {
        station.RecordIntercomTo(*m_options.recordDirectory + "/rpk" + std::to_string(device.id) + "-intercom.wav");
    }
    if (m_options.acceptCalls) { station.SetCallBehaviour({CallReply::Accept, {}}); }
    m_pagingStations.push_back(&station);
}

void Simulator::ApplySettings() {
    for (const PlacedCommand& setting : m_script.settings) {
        try {
            m_installation.OnReactor().Run([&] { setting.command.action(m_stage); });
        } catch (const std::exception& error) { throw UsageError(setting.place + ": " + error.what()); }
    }
}

void Simulator::StartDevices() {
    const std::size_t count = std::max<std::size_t>(m_options.devices.size(), 1);
    const std::chrono::milliseconds spread = std::min(kMostSpread, m_statusPeriod / static_cast<std::int64_t>(count));
    std::chrono::milliseconds firstStatus{0};
    for (const DeviceOption& device : m_options.devices) {
        m_installation.Find<Device>(device.id)->ReportEvery(m_statusPeriod, firstStatus);
        StartTone(device);
        firstStatus += spread;
    }
}

void Simulator::StartTone(const DeviceOption& device) {
    if (device.group.empty()) { return; }
    const Endpoint group{device.group, kAudioPort};
    AudioSource* source = nullptr;
    if (const auto controller = m_zoneControllers.find(device.id); controller != m_zoneControllers.end()) {
        controller->second->SetZoneGroup(kToneZone, device.group);
        source = &controller->second->StreamZone(kToneZone, ToneStreamed());
    } else {
        source = &m_installation.Find<Device>(device.id)->Stream(group, ToneStreamed());
    }
    m_streams.push_back({device.id, group, source});
}

RunEnd Simulator::Run(const std::function<bool()>& hostHasEnded) {
    m_hostHasEnded = hostHasEnded;
    Begin();
    while (!IsOver() && !m_installation.OnReactor().HasFailed()) { TakeEvents(kLongestWait); }
    m_installation.WaitUntil([] { return true; }, kLongestWait); // the devices are through with what they received
    TakeEvents(std::chrono::milliseconds(0));
    WriteSummary();
    m_installation.OnReactor().RethrowFailure();
    return *m_end;
}

void Simulator::Begin() {
    m_writer.Write(ReadyJson(m_start));
    Flush();
    m_timeline.Begin(m_start);
    if (!m_options.readCommands) { return; }
    m_installation.OnReactor().Run([this] {
        const CommandContext context{m_script.roster, std::filesystem::current_path()};
        m_input = std::make_unique<CommandInput>(STDIN_FILENO, context, m_stage);
    });
}

bool Simulator::IsOver() {
    if (!m_end) { m_end = FindEnd(); }
    return m_end.has_value();
}

std::optional<RunEnd> Simulator::FindEnd() {
    if (m_signals.HaveCome()) { return RunEnd::Signal; } // before the host, which a terminal gives the same signal
    if (m_hostHasEnded && m_hostHasEnded()) { return RunEnd::HostEnded; }
    if (m_stage.ended || IsEnoughClosed()) { return RunEnd::Asked; }
    const double duration = m_options.duration.value_or(0);
    if (duration == 0 || Clock::now() - m_start < Seconds(duration)) { return std::nullopt; }
    return m_options.untilClose > 0 ? RunEnd::TimeOver : RunEnd::Asked;
}

bool Simulator::IsEnoughClosed() const {
    return m_options.untilClose > 0 && m_closeRequests >= m_options.untilClose;
}

void Simulator::TakeEvents(std::chrono::milliseconds timeout) {
    const Journal::Batch batch = m_installation.Events().Take(timeout);
    m_writer.Write(batch);
    for (const Event& event : batch.events) { Meet(event); }
    Flush();
}

void Simulator::Flush() {
    m_writer.Flush([this] { return IsOver(); });
}

void Simulator::Meet(const Event& event) {
    if (Received(command::kCloseAudio)(event)) { ++m_closeRequests; }
    if (event.kind == Event::Kind::LeftGroup) { WriteFinished(event.device); }
    React(event);
}

void Simulator::React(const Event& event) {
    for (const Reaction& reaction : m_script.reactions) {
        if (!reaction.trigger(event)) { continue; }
        m_installation.OnReactor().Run([&] {
            m_installation.OnReactor().After(Milliseconds(reaction.after),
                                             [&] { Execute(reaction.command, "reaction", m_stage); });
        });
    }
}

void Simulator::WriteFinished(std::uint32_t controller) {
    for (const Recording& recording : m_zoneControllers.at(controller)->TakeFinished()) {
        m_writer.Write(ToJson(recording, controller, m_start));
    }
}

void Simulator::WriteSummary() {
    for (const auto& [id, controller] : m_zoneControllers) {
        for (const Recording& recording : controller->Recordings()) { m_writer.Write(ToJson(recording, id, m_start)); }
        for (const auto& [zone, file] : controller->RecordedFiles()) {
            m_writer.Write({{"event", "wav"}, {"device", id}, {"zone", zone}, {"file", file}});
        }
    }
    for (PagingStation* station : m_pagingStations) { WriteIntercom(*station); }
    for (const ToneStream& stream : m_streams) {
        m_writer.Write(StreamJson(stream.device, stream.group, stream.source->Sent()));
    }
    WriteCable();
    if (m_writer.Held() > 0) { m_writer.Write({{"event", "held-back"}, {"count", m_writer.Held()}}); }
    Flush();
}

void Simulator::WriteCable() {
    if (!m_tap) { return; }
    const std::size_t missed = m_tap->Missed();
    for (const auto& [receiver, datagrams] : m_tap->Datagrams()) {
        m_writer.Write(CableJson({receiver.first, receiver.second}, datagrams, missed));
    }
}

void Simulator::WriteIntercom(PagingStation& station) {
    const IntercomRecording heard = station.IntercomAudio();
    if (heard.datagrams == 0) { return; }
    m_writer.Write(ToJson(heard, station.Id()));
    const std::string file = station.RecordedIntercom();
    if (!file.empty()) { m_writer.Write({{"event", "wav"}, {"device", station.Id()}, {"file", file}}); }
}

} // namespace k740::sim
