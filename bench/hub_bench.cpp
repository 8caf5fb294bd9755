// The rate at which the hub takes packets, beside a bare receive loop on a socket of the same kind.
#include "app/application.h"
#include "bench/station.h"
#include "bench/udp_drops.h"
#include "common/udp.h"
#include "protocol/commands.h"

#include <benchmark/benchmark.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <thread>

namespace {

constexpr int kBarePort = 29100;
constexpr std::chrono::seconds kFloodTime{1};

/// A packet that the hub dispatches and its handler drops, so that what is measured is the way there.
_vxa_cmd_packet_t ForeignReport() {
    _vxa_cmd_packet_t packet;
    FillK740PackageHeader(&packet, 1000, 9500, kCmdZCUStatusReport, 85);
    return packet;
}

void DispatchStatusReport(benchmark::State& state) {
    CK740ControlApp app;
    const _vxa_cmd_packet_t packet = ForeignReport();
    const std::string sender = "192.168.1.33";
    for (auto _ : state) { app.Communication().ProcessResponse(&packet, sender); }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(DispatchStatusReport);

/// Sends packets from the field to a port of the station, as fast as it can. @return how many
int64_t Flood(int port) {
    CQBUDP sender;
    k740::bench::TheStation().Network().RunInField([&] { sender.set_udp_host(k740::sim::kStationAddress, port); });
    const _vxa_cmd_packet_t packet = ForeignReport();
    int64_t sent = 0;
    const auto end = std::chrono::steady_clock::now() + kFloodTime;
    while (std::chrono::steady_clock::now() < end) {
        sender.send_udp_data(reinterpret_cast<const char*>(&packet), sizeof(packet));
        ++sent;
    }
    return sent;
}

/// Floods a port and counts what its socket did not have to drop.
void MeasureReceiver(benchmark::State& state, int port) {
    int64_t taken = 0;
    int64_t dropped = 0;
    for (auto _ : state) {
        const int64_t before = k740::bench::UdpDrops(port);
        const int64_t sent = Flood(port);
        const int64_t lost = k740::bench::UdpDrops(port) - before;
        taken += sent - lost;
        dropped += lost;
    }
    state.SetItemsProcessed(taken);
    state.counters["dropped"] = static_cast<double>(dropped);
}

void HubReceives(benchmark::State& state) {
    k740::bench::TheStation().UseLibrary();
    MeasureReceiver(state, kReplyPort);
}
BENCHMARK(HubReceives)->Iterations(1)->Repetitions(3)->UseRealTime();

void BareLoopReceives(benchmark::State& state) {
    CQBUDP socket;
    const int descriptor = socket.create_udp_host(kBarePort);
    std::thread receiver([&] {
        std::array<unsigned char, 5120> buffer{};
        while (recv(descriptor, buffer.data(), buffer.size(), 0) > 0) {}
    });
    MeasureReceiver(state, kBarePort);
    shutdown(descriptor, SHUT_RDWR);
    receiver.join();
}
BENCHMARK(BareLoopReceives)->Iterations(1)->Repetitions(3)->UseRealTime();

} // namespace
