// Zone strings and log lines.
#include "app/application.h"
#include "bench/station.h"
#include "common/format.h"
#include "devices/zone_string.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

/// A registry of its own with controllers 1..count; nothing is sent, because no NIC leads to them.
void Register(CK740ControlApp& app, int count) {
    for (int id = 1; id <= count; ++id) {
        app.Devices().AddDevice(id, 1, Format("192.168.%d.%d", 10 + id / 200, 1 + id % 200));
    }
}

void ZoneStringOfAllZones(benchmark::State& state) {
    CK740ControlApp app;
    Register(app, 500);
    for (auto _ : state) {
        std::string zones = "FFFFFF";
        benchmark::DoNotOptimize(app.Devices().IsZoneStringValid(zones));
    }
    state.SetItemsProcessed(state.iterations() * 500);
}
BENCHMARK(ZoneStringOfAllZones);

void LongestZoneString(benchmark::State& state) {
    CK740ControlApp app;
    Register(app, 500);
    std::string text;
    while (text.size() + 7 <= kMaxZoneText) { text += "0001FF;"; }
    for (auto _ : state) {
        std::string zones = text;
        benchmark::DoNotOptimize(app.Devices().IsZoneStringValid(zones));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(text.size() / 7));
}
BENCHMARK(LongestZoneString);

void PushLogLine(benchmark::State& state) {
    CLog log;
    for (auto _ : state) { log.PushLog("Player", kLogInfo, "Start to send audio stream to ZCU, task ID 1001"); }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(PushLogLine);

void PushCallbackLogLine(benchmark::State& state) {
    CLog log;
    for (auto _ : state) { log.PushLog2("PTASKSTATUS", kLogInfo, "PTASKSTATUS(1001, 2)"); }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(PushCallbackLogLine);

} // namespace
