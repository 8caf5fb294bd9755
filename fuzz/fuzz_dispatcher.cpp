// Feeds sequences of datagrams to the dispatcher of an application whose registry is populated. What the handlers send
// stays in a network namespace without any interface.
#include "app/application.h"
#include "common/thread.h"
#include "protocol/port_receiver.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr int kMostThreads = 64; // of accepted play requests
constexpr useconds_t kPollUs = 1000;
constexpr std::size_t kPrefixBytes = 3; // sender and options, then the datagram's length
constexpr std::array kSenders{"192.168.1.33", "192.168.8.99", "10.0.0.1", "127.0.0.1"};

void LeaveNetwork() {
    if (unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0) { return; }
    std::perror("the fuzz target needs a network namespace of its own");
    std::abort();
}

int IgnoreMessage(int /*stationID*/, int /*intercomID*/, int /*message*/) {
    return 0;
}

/// @return an application that is never destroyed, since the threads of play requests outlive the last input
CK740ControlApp* MakeInstallation() {
    auto* app = new CK740ControlApp;
    app->Callbacks().intercomMessage.Set(IgnoreMessage);
    app->Configuration().SetDefaults();
    app->Lifetime().Begin();
    app->Devices().AddDevice(1, 0, "192.168.1.1");
    app->Devices().AddDevice(33, 1, "192.168.1.33");
    app->Devices().AddDevice(900, 9, "");
    app->Devices().AddDevice(5000, 2, "192.168.8.99");
    app->Devices().AddDevice(5500, 10, "");
    app->Devices().AddDevice(7001, 3, "192.168.9.1");
    return app;
}

/// Hands one datagram to the dispatcher, most of them with the right magic, so that the handlers are reached.
void Dispatch(CK740ControlApp& app, uint8_t options, const uint8_t* data, std::size_t length) {
    auto buffer = std::make_unique<ReceiveBuffer>();
    std::memcpy(buffer.get(), data, std::min(length, kReceiveBufferBytes));
    if ((options & 0x80) == 0) { buffer->packet.magic = kPacketMagic; }
    app.Communication().ProcessResponse(&buffer->packet, kSenders[options % kSenders.size()]);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    LeaveNetwork();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static CK740ControlApp* const app = MakeInstallation();
    while (RunningThreads() > kMostThreads) { usleep(kPollUs); }
    while (size > kPrefixBytes) {
        uint16_t wanted = 0;
        std::memcpy(&wanted, data + 1, sizeof(wanted));
        const std::size_t length = std::min<std::size_t>(wanted, size - kPrefixBytes);
        Dispatch(*app, data[0], data + kPrefixBytes, length);
        data += kPrefixBytes + length;
        size -= kPrefixBytes + length;
    }
    app->ZCU().UpdateZCUStatus();
    app->RPK().UpdateRPKStatus();
    app->PostVolumes();
    for (const auto& record : app->ZCU().GetAllZCUStatus()) { app->PostZCUDeviceStatus(record); }
    for (const auto& record : app->RPK().GetAllRPKStatus()) { app->PostRPKDeviceStatus(record); }
    return 0;
}
