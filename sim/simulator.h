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
#include <optional>
#include <vector>

namespace k740::sim {

/// Why a run ended.
enum class RunEnd {
    Asked,    ///< by a command, or by what the options say
    TimeOver, ///< before enough close-audio requests had come
    Signal,
    HostEnded
};

class Simulator {
public:
    /// @param events   where what happens is told
    /// @param signals  end a run; outlive the simulator
    /// @throws UsageError for a setting that a device cannot have
    Simulator(const SimOptions& options, Script script, FileDescriptor events, EndSignals& signals);
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    /// Runs to the end, which is looked for ten times a second at least.
    /// @param hostHasEnded  empty: there is no host
    /// @throws std::runtime_error when something failed meanwhile; what there is to tell at the end has been told
    RunEnd Run(const std::function<bool()>& hostHasEnded = {});

private:
    struct ToneStream {
        std::uint32_t device = 0;
        Endpoint group;
        AudioSource* source = nullptr;
    };

    void AddDevices();
    void AddZoneController(const DeviceOption& device);
    void AddPagingStation(const DeviceOption& device);
    void ApplySettings();
    void StartDevices();
    void StartTone(const DeviceOption& device);
    void Begin();
    [[nodiscard]] bool IsOver();
    [[nodiscard]] std::optional<RunEnd> FindEnd();
    [[nodiscard]] bool IsEnoughClosed() const;

    void TakeEvents(std::chrono::milliseconds timeout);
    void Flush();
    void Meet(const Event& event);
    void React(const Event& event);
    void WriteFinished(std::uint32_t controller);
    void WriteSummary();
    void WriteIntercom(PagingStation& station);
    void WriteCable();

    const SimOptions m_options;
    const Script m_script;
    EndSignals& m_signals;
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
    std::function<bool()> m_hostHasEnded;
    std::optional<RunEnd> m_end;     // of the run: the first that was found
    std::unique_ptr<CableTap> m_tap; // of a private network
};

} // namespace k740::sim
