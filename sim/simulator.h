// The devices of k740-sim: made from its options, run, and told about as JSON lines.
#pragma once

#include "sim/audio_source.h"
#include "sim/cable_tap.h"
#include "sim/command_input.h"
#include "sim/end_signals.h"
#include "sim/event_writer.h"
#include "sim/installation.h"
#include "sim/script.h"
#include "sim/sim_options.h"
#include "sim/timeline.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace k740::sim {

class Simulator {
public:
    /// @param signals  end a run; outlives the simulator
    /// @throws UsageError for a setting that a device cannot have
    Simulator(const SimOptions& options, Script script, const EndSignals& signals);
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    /// Runs until enough close-audio requests have come, a command or a signal ends it or the time is over.
    /// @return whether it ended as asked, not because the time was over before
    bool Run();

    /// Runs until the condition holds, which is looked at ten times a second at least, or a command, a signal or the
    /// time ends it.
    /// @return whether the condition came to hold
    bool RunUntil(const std::function<bool()>& condition);

    /// Whether a command has ended the run.
    [[nodiscard]] bool EndedByCommand() const { return m_stage.ended; }

private:
    struct ToneStream {
        std::uint32_t device = 0;
        Endpoint group;
        AudioSource* source = nullptr;
    };

    void AddDevices();
    void AddZoneController(const DeviceOption& device, std::chrono::milliseconds firstStatus);
    void AddPagingStation(const DeviceOption& device, std::chrono::milliseconds firstStatus);
    void AddOther(const DeviceOption& device);
    void NoteStream(const DeviceOption& device, AudioSource& source);
    void ApplySettings();
    void Begin();
    [[nodiscard]] bool IsOver() const;

    void TakeEvents(std::chrono::milliseconds timeout);
    void Meet(const Event& event);
    void React(const Event& event);
    void WriteFinished(std::uint32_t controller);
    void WriteSummary();
    void WriteIntercom(PagingStation& station);
    void WriteCable();

    const SimOptions m_options;
    const Script m_script;
    const EndSignals& m_signals;
    const std::chrono::milliseconds m_statusPeriod;
    const Clock::time_point m_start = Clock::now();
    EventWriter m_writer;
    Installation m_installation;
    Stage m_stage{m_installation};
    Timeline m_timeline;
    std::unique_ptr<CommandInput> m_input;
    std::map<std::uint32_t, ZoneController*> m_zoneControllers;
    std::vector<PagingStation*> m_pagingStations;
    std::vector<ToneStream> m_streams;
    std::size_t m_closeRequests = 0;
    std::unique_ptr<CableTap> m_tap; // of a private network
};

} // namespace k740::sim
