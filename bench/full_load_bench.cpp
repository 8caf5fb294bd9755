// A full installation at once: monitored zones, push-to-talk groups, intercom calls and broadcasts.
#include "app/k740.h"
#include "bench/process_use.h"
#include "bench/station.h"
#include "common/format.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using k740::bench::TheStation;
using namespace k740;
using SteadyClock = std::chrono::steady_clock;

constexpr int kZones = 5;
constexpr int kTalkers = 5;
constexpr int kCalls = 2;
constexpr int kBroadcasts = 20;
constexpr int kMonitoredController = 50;
constexpr int kPlayingController = 51;
constexpr const char* kPlayingZones = "0033FF";
constexpr int kFirstTalker = 5001;
constexpr int kFirstCaller = 5101;
constexpr int kFirstIntercom = 5501;
constexpr int kAudioPort = 28100;
constexpr int kBlockBytes = 1764;
constexpr int kFrameBytes = 4096;
constexpr std::chrono::milliseconds kBlockPeriod{20};
constexpr std::chrono::seconds kMeasured{10};
constexpr std::chrono::seconds kCallIsReady{4}; // audio flows some 3 s after a call was accepted
constexpr std::chrono::milliseconds kPatience{10'000};

std::atomic<std::size_t> g_monitored{0};
std::atomic<std::size_t> g_talked{0};
std::atomic<std::size_t> g_heardInCalls{0};

int CountMonitored(int, int, unsigned char*, int) {
    ++g_monitored;
    return 0;
}

int CountTalked(int, int, unsigned char*, int) {
    ++g_talked;
    return 0;
}

int CountHeardInCalls(int, unsigned char*, int) {
    ++g_heardInCalls;
    return 0;
}

int Ignore(int, int, int) {
    return 0;
}

void Require(bool done, const char* what) {
    if (!done) { throw std::runtime_error(what); }
}

std::string Address(int device) {
    return Format("192.168.20.%d", device % 100 + (device >= kFirstCaller ? 100 : 0));
}

/// The simulated side and what the host asks of the library.
class FullLoad {
public:
    FullLoad() {
        TheStation().UseLibrary();
        TheStation().Network().RunInField([this] { m_field = std::make_unique<sim::Installation>(); });
        K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, CountMonitored, nullptr, CountTalked);
        K740_SetIntercomCallback(Ignore, CountHeardInCalls);
        MonitorZones();
        ReceiveTalkers();
        for (int i = 0; i < kCalls; ++i) { Call(kFirstCaller + i, kFirstIntercom + i); }
        Broadcast();
        Require(m_field->WaitUntil([] { return g_monitored > 0 && g_talked > 0; }, kPatience), "no audio");
    }

    ~FullLoad() {
        for (int zone = 1; zone <= kZones; ++zone) { K740_MonitorZone(kMonitoredController, zone, 0); }
        for (int i = 0; i < kTalkers; ++i) { K740_RemoveDevice(kFirstTalker + i); }
        for (int i = 0; i < kCalls; ++i) {
            K740_HangUp(kFirstIntercom + i);
            K740_RemoveDevice(kFirstIntercom + i);
            K740_RemoveDevice(kFirstCaller + i);
        }
        for (int task = 1; task <= kBroadcasts; ++task) { K740_StopTask(task); }
        K740_RemoveDevice(kMonitoredController);
        K740_RemoveDevice(kPlayingController);
    }
    FullLoad(const FullLoad&) = delete;
    FullLoad& operator=(const FullLoad&) = delete;

    /// @return datagrams of audio that the stations in calls have heard
    [[nodiscard]] std::size_t HeardByCallers() const {
        std::size_t heard = 0;
        for (const sim::PagingStation* caller : m_callers) { heard += caller->IntercomAudio().datagrams; }
        return heard;
    }

    /// @return datagrams of audio that the controller has heard in all broadcasts
    [[nodiscard]] std::size_t HeardInBroadcasts() const { return m_player->CountDatagrams(); }

    /// Streams a fixed count of datagrams from every source, and waits until all have been sent.
    void StreamAll(std::size_t count) {
        sim::AudioStream stream;
        stream.count = count;
        std::vector<sim::AudioSource*> sources;
        for (int zone = 1; zone <= kZones; ++zone) { sources.push_back(&m_controller->StreamZone(zone, stream)); }
        for (int i = 0; i < kTalkers; ++i) { sources.push_back(&m_talkers[Index(i)]->Talk(TalkGroup(i), stream)); }
        for (sim::PagingStation* caller : m_callers) { sources.push_back(&caller->SendIntercomAudio(stream)); }
        for (const sim::AudioSource* source : sources) {
            Require(m_field->WaitUntil([=] { return source->Sent() == count; }, 2 * kMeasured), "a source is too slow");
        }
    }

private:
    static std::size_t Index(int i) { return static_cast<std::size_t>(i); }
    static sim::Endpoint TalkGroup(int i) { return {Format("226.0.1.%d", i + 1), kAudioPort}; }

    sim::PagingStation& AddStation(int id) {
        TheStation().Network().AddFieldAddresses({Address(id)});
        sim::PagingStation& station = m_field->AddPagingStation(static_cast<std::uint32_t>(id), Address(id));
        Require(K740_AddDevice(id, 2, Address(id).c_str()) == 0, "a paging station cannot be registered");
        return station;
    }

    sim::ZoneController& AddController(int id) {
        TheStation().Network().AddFieldAddresses({Address(id)});
        sim::ZoneController& controller = m_field->AddZoneController(static_cast<std::uint32_t>(id), Address(id));
        Require(K740_AddDevice(id, 1, Address(id).c_str()) == 0, "a controller cannot be registered");
        return controller;
    }

    void Broadcast() {
        m_player = &AddController(kPlayingController);
        m_player->SetKeep(sim::Keep::Counts);
        for (int task = 1; task <= kBroadcasts; ++task) {
            Require(K740_StartAudioStreamTask(task, 100, 70, 1, kPlayingZones, 0) == 0, "a task cannot be started");
        }
        for (int task = 1; task <= kBroadcasts; ++task) {
            Await([=] { return K740_GetTaskStatus(task) == 2; });
        }
    }

    template <typename Condition> static void Await(Condition condition) {
        const auto end = SteadyClock::now() + kPatience;
        while (!condition()) {
            Require(SteadyClock::now() < end, "the library does not get ready");
            std::this_thread::sleep_for(kBlockPeriod);
        }
    }

    void MonitorZones() {
        m_controller = &AddController(kMonitoredController);
        for (int zone = 1; zone <= kZones; ++zone) {
            m_controller->SetZoneGroup(zone, Format("226.0.0.%d", zone));
            m_controller->StreamZone(zone);
            Require(K740_MonitorZone(kMonitoredController, zone, 1) == 0, "a zone cannot be monitored");
        }
    }

    void ReceiveTalkers() {
        for (int i = 0; i < kTalkers; ++i) {
            m_talkers.push_back(&AddStation(kFirstTalker + i));
            m_talkers.back()->Talk(TalkGroup(i));
            Require(K740_SetRPKPTTMulticastIP(kFirstTalker + i, TalkGroup(i).ip.c_str()) == 0, "no group");
        }
    }

    void Call(int station, int intercom) {
        m_callers.push_back(&AddStation(station));
        Require(K740_AddDevice(intercom, 10, "") == 0, "an intercom cannot be registered");
        Require(K740_Invite(intercom, station) == 0, "a station cannot be called");
        m_callers.back()->AnswerCall(static_cast<std::uint32_t>(intercom), 1);
        int status = 0;
        Await([&] { return K740_GetIntercomStatus(intercom, &status, nullptr) == 0 && status == 2; });
    }

    std::unique_ptr<sim::Installation> m_field;
    sim::ZoneController* m_controller = nullptr;
    sim::ZoneController* m_player = nullptr;
    std::vector<sim::PagingStation*> m_talkers;
    std::vector<sim::PagingStation*> m_callers;
};

/// Pushes real-time audio to all broadcasts and calls. @return bytes pushed to each
std::size_t PushRealTime(SteadyClock::duration length) {
    std::vector<unsigned char> block(kBlockBytes, 0x11);
    std::size_t pushed = 0;
    auto next = SteadyClock::now();
    for (const auto end = next + length; next < end; pushed += kBlockBytes) {
        std::this_thread::sleep_until(next += kBlockPeriod);
        for (int task = 1; task <= kBroadcasts; ++task) { K740_SendAudioStreamProc(task, block.data(), kBlockBytes); }
        for (int i = 0; i < kCalls; ++i) { K740_SendIntercomAudio(kFirstIntercom + i, block.data(), kBlockBytes); }
    }
    return pushed;
}

/// Reports the library's CPU in per cent of one core, and how many datagrams each kind of audio lost.
void FullLoadCpu(benchmark::State& state) {
    FullLoad load;
    std::this_thread::sleep_for(kCallIsReady);
    const auto frames = static_cast<std::size_t>(kMeasured / std::chrono::microseconds(46'400));
    for (auto _ : state) {
        const std::size_t heardBefore = load.HeardByCallers();
        const std::size_t broadcastBefore = load.HeardInBroadcasts();
        std::size_t pushed = 0;
        load.StreamAll(1); // ends the endless streams
        std::this_thread::sleep_for(10 * kBlockPeriod);
        g_monitored = g_talked = g_heardInCalls = 0;
        const auto start = SteadyClock::now();
        const bench::CLibraryCpu cpu;
        std::thread pusher([&] { pushed = PushRealTime(kMeasured); });
        load.StreamAll(frames);
        pusher.join();
        const auto used = static_cast<double>(cpu.Used());
        const auto passed = static_cast<double>(std::chrono::nanoseconds(SteadyClock::now() - start).count());
        std::this_thread::sleep_for(25 * kBlockPeriod); // until what is on its way has arrived
        const std::size_t framesPushed = pushed / kFrameBytes;
        const auto lost = [&](std::size_t sent, std::size_t received) {
            return static_cast<double>(sent) - static_cast<double>(received);
        };
        state.counters["library_cpu_percent"] = 100 * used / passed;
        state.counters["lost_monitor"] = lost(frames * kZones, g_monitored);
        state.counters["lost_ptt"] = lost(frames * kTalkers, g_talked);
        state.counters["lost_from_callers"] = lost(frames * kCalls, g_heardInCalls);
        state.counters["lost_to_callers"] = lost(framesPushed * kCalls, load.HeardByCallers() - heardBefore);
        state.counters["lost_broadcast"] = lost(framesPushed * kBroadcasts, load.HeardInBroadcasts() - broadcastBefore);
    }
}
BENCHMARK(FullLoadCpu)->Iterations(1)->UseRealTime();

} // namespace
