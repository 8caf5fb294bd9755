// What broadcasting costs: from a push to the datagram on the wire, and the CPU of idle and fed tasks.
#include "app/k740.h"
#include "bench/process_use.h"
#include "bench/station.h"
#include "common/format.h"

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace {

using k740::bench::TheStation;
using SteadyClock = std::chrono::steady_clock;

constexpr int kTasks = 200;
constexpr int kListened = 20; // groups that one socket may join by default
constexpr int kFrameBytes = 4096;
constexpr int kPort = 28100;
constexpr std::chrono::microseconds kFramePeriod{46'440};
constexpr std::chrono::seconds kCpuTime{5};
constexpr int kBlockBytes = 1764;
constexpr std::chrono::milliseconds kBlockPeriod{20};

std::string GroupOf(int task) {
    return Format("225.0.0.%d", task); // channels are given out in the order of the tasks
}

/// Hears one task's group in the station itself.
class Listener {
public:
    explicit Listener(int task) : m_socket(socket(AF_INET, SOCK_DGRAM, 0)) {
        const int on = 1;
        const int off = 0;
        setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
        setsockopt(m_socket, IPPROTO_IP, IP_MULTICAST_ALL, &off, sizeof(off));
        sockaddr_in group{};
        group.sin_family = AF_INET;
        group.sin_port = htons(kPort);
        group.sin_addr.s_addr = inet_addr(GroupOf(task).c_str());
        bind(m_socket, reinterpret_cast<const sockaddr*>(&group), sizeof(group));
        const ip_mreq membership{group.sin_addr, {inet_addr(k740::sim::kStationAddress)}};
        setsockopt(m_socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, &membership, sizeof(membership));
    }
    ~Listener() { close(m_socket); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Waits for the next datagram. @return false when none comes
    bool Await() const {
        std::array<char, 2048> data;
        pollfd readable{m_socket, POLLIN, 0};
        return poll(&readable, 1, 1000) == 1 && recv(m_socket, data.data(), data.size(), 0) > 0;
    }

private:
    const int m_socket;
};

double PercentileUs(std::vector<int64_t>& latencies, double part) {
    if (latencies.empty()) { return 0; }
    const auto at = static_cast<std::ptrdiff_t>(part * static_cast<double>(latencies.size() - 1));
    std::nth_element(latencies.begin(), latencies.begin() + at, latencies.end());
    return static_cast<double>(latencies[static_cast<std::size_t>(at)]) / 1000;
}

void ReportLatencies(benchmark::State& state, std::vector<int64_t>& latencies) {
    state.counters["p50_us"] = PercentileUs(latencies, 0.5);
    state.counters["p99_us"] = PercentileUs(latencies, 0.99);
    state.counters["max_us"] = PercentileUs(latencies, 1);
    state.counters["samples"] = static_cast<double>(latencies.size());
}

/// Pushes whole frames to all tasks in turn, evenly over the period of a frame, and measures how long it takes until a
/// listener has the datagram in hand, its own wake-up included.
void PushToWire(benchmark::State& state) {
    const int tasks = static_cast<int>(state.range(0));
    const int rounds = static_cast<int>(state.range(1));
    TheStation().StartTasks(tasks);
    std::vector<std::unique_ptr<Listener>> listeners;
    for (int task = 1; task <= std::min(tasks, kListened); ++task) {
        listeners.push_back(std::make_unique<Listener>(task));
    }
    std::vector<unsigned char> frame(kFrameBytes, 0x11);
    std::vector<int64_t> latencies;
    for (auto _ : state) {
        auto next = SteadyClock::now();
        for (int round = 0; round < rounds; ++round) {
            for (int task = 1; task <= tasks; ++task) {
                std::this_thread::sleep_until(next += kFramePeriod / tasks);
                const auto pushed = SteadyClock::now();
                K740_SendAudioStreamProc(task, frame.data(), kFrameBytes);
                if (task > static_cast<int>(listeners.size())) { continue; }
                if (listeners[static_cast<std::size_t>(task - 1)]->Await()) {
                    latencies.push_back(std::chrono::nanoseconds(SteadyClock::now() - pushed).count());
                }
            }
        }
    }
    TheStation().StopTasks(tasks);
    ReportLatencies(state, latencies);
}
BENCHMARK(PushToWire)->ArgNames({"tasks", "rounds"})->Args({1, 200})->Args({kTasks, 100})->Iterations(1)->UseRealTime();

/// Reports the CPU that the library's threads use while work runs, in per cent of one core.
template <typename Work> void MeasureCpu(benchmark::State& state, Work work) {
    for (auto _ : state) {
        const auto start = SteadyClock::now();
        const k740::bench::CLibraryCpu cpu;
        work();
        const auto used = static_cast<double>(cpu.Used());
        const auto passed = static_cast<double>(std::chrono::nanoseconds(SteadyClock::now() - start).count());
        state.counters["library_cpu_percent"] = 100 * used / passed;
    }
}

void IdleCpu(benchmark::State& state) {
    const int tasks = static_cast<int>(state.range(0));
    TheStation().UseLibrary();
    const double before = k740::bench::ResidentMegabytes();
    if (tasks > 0) { TheStation().StartTasks(tasks); }
    MeasureCpu(state, [] { std::this_thread::sleep_for(kCpuTime); });
    state.counters["added_resident_MB"] = k740::bench::ResidentMegabytes() - before;
    if (tasks > 0) { TheStation().StopTasks(tasks); }
}
BENCHMARK(IdleCpu)->ArgName("tasks")->Arg(0)->Arg(kTasks)->Iterations(1)->UseRealTime();

void FedCpu(benchmark::State& state) {
    const int tasks = static_cast<int>(state.range(0));
    TheStation().StartTasks(tasks);
    std::vector<unsigned char> block(kBlockBytes, 0x11);
    int64_t pushNs = 0;
    MeasureCpu(state, [&] {
        const int64_t before = k740::bench::ThisThreadCpuNs();
        auto next = SteadyClock::now();
        for (const auto end = next + kCpuTime; next < end;) {
            std::this_thread::sleep_until(next += kBlockPeriod);
            for (int task = 1; task <= tasks; ++task) { K740_SendAudioStreamProc(task, block.data(), kBlockBytes); }
        }
        pushNs = k740::bench::ThisThreadCpuNs() - before;
    });
    state.counters["pushing_cpu_percent"] =
        100 * static_cast<double>(pushNs) / static_cast<double>(std::chrono::nanoseconds(kCpuTime).count());
    TheStation().StopTasks(tasks);
}
BENCHMARK(FedCpu)->ArgName("tasks")->Arg(kTasks)->Iterations(1)->UseRealTime();

} // namespace
