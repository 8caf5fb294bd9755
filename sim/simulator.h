// The devices of k740-sim: made from its options, run, and told about as JSON lines.
#pragma once

#include "sim/audio_source.h"
#include "sim/end_signals.h"
#include "sim/installation.h"
#include "sim/sim_options.h"

#include <chrono>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <vector>

namespace k740::sim {

class Simulator {
public:
    /// @param signals  end a run; outlives the simulator
    Simulator(const SimOptions& options, const EndSignals& signals);

    /// Runs until enough close-audio requests have come, a signal comes or the time is over.
    /// @return whether it ended as asked, not because the time was over before
    bool Run();

    /// Runs until the condition holds, which is looked at ten times a second at least, or a signal or the time ends it.
    /// @return whether the condition came to hold
    bool RunUntil(const std::function<bool()>& condition);

private:
    struct ToneStream {
        std::uint32_t device = 0;
        Endpoint group;
        AudioSource* source = nullptr;
    };

    void OpenEvents();
    void AddZoneController(const DeviceOption& device, std::chrono::milliseconds statusPeriod);
    void AddPagingStation(const DeviceOption& device, std::chrono::milliseconds statusPeriod);
    void AddAuxInterface(const DeviceOption& device);
    void NoteStream(const DeviceOption& device, AudioSource& source);
    [[nodiscard]] bool TimeIsOver() const;
    [[nodiscard]] bool EnoughClosed() const;

    void Write(const nlohmann::ordered_json& line);
    void WriteNewEvents(std::chrono::milliseconds timeout);
    void WriteSummary();
    void WriteWavs(const ZoneController& controller);
    void WriteIntercom(const PagingStation& station);

    const SimOptions m_options;
    const EndSignals& m_signals;
    const Clock::time_point m_start = Clock::now();
    std::ofstream m_file;
    Installation m_installation;
    std::vector<const ZoneController*> m_zoneControllers;
    std::vector<const PagingStation*> m_pagingStations;
    std::vector<ToneStream> m_streams;
    std::size_t m_written = 0; // events
};

} // namespace k740::sim
