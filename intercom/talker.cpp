#include "intercom/talker.h"

#include "app/application.h"
#include "common/worker.h"
#include "player/audio_decoder.h"
#include "protocol/commands.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int kReceivedQueue = 1; // the one user of its slot
constexpr unsigned kMaintainPauseMs = 200;
constexpr unsigned kEmptyReceivePauseMs = 5;
constexpr unsigned kIdleNotifierMs = 1'000; // a datagram and the shutdown end the wait at once

} // namespace

CTALKER::CTALKER(CK740ControlApp& app)
    : m_app(app), m_receiver(app, {kIntercomPort, "k740-rx29002", kEmptyReceivePauseMs, [](bool) {},
                                   [this](const ReceiveBuffer& buffer, std::size_t length, const sockaddr_in&) {
                                       return NewIntercomRPKAudio(buffer.Bytes(), length) == 0;
                                   }}) {
    m_received.New(kReceivedQueue, kMaxReceivedAudio * kRPKAudioBytes);
}

void CTALKER::Initialization() {
    m_app.StartServiceThread("k740-talker", [this] {
        RunWorker(m_app.Lifetime(), kMaintainPauseMs, [this] { MaintainTalkStatus(time(nullptr)); });
    });
    m_receiver.Start();
    m_app.StartServiceThread("k740-talk-audio", [this] { ThreadNotifyInercomAudio(); });
}

void CTALKER::WakeThreads() {
    m_receiver.Wake();
    m_audioReceived.Raise();
    m_senders.RaiseAll();
}

int CTALKER::NewIntercomRPKAudio(const unsigned char* data, std::size_t length) {
    tagINTERCOM_RPK_AUDIO datagram{};
    std::memcpy(datagram.data, data, std::min(length, sizeof(datagram.data)));
    while (!m_received.Push(kReceivedQueue, datagram.data, sizeof(datagram.data))) {
        tagINTERCOM_RPK_AUDIO oldest;
        if (GetFirstIntercomRPKAudio(oldest) != 0) { return -1; } // there is no memory at all
    }
    m_audioReceived.Raise();
    return 0;
}

int CTALKER::GetFirstIntercomRPKAudio(tagINTERCOM_RPK_AUDIO& out) {
    if (m_received.Take(kReceivedQueue, out.data, sizeof(out.data))) { return 0; }
    out = {};
    return -1;
}

// One decoder serves all stations and is never reset: each datagram leaves the state that its sender's next one needs.
void CTALKER::ThreadNotifyInercomAudio() {
    CAudioDecoder decoder;
    tagINTERCOM_RPK_AUDIO datagram;
    while (!m_app.Lifetime().IsExiting()) {
        if (GetFirstIntercomRPKAudio(datagram) == 0) {
            ContainExceptions([&] { NotifyAudio(decoder, datagram); });
        } else {
            m_audioReceived.Wait(kIdleNotifierMs);
        }
    }
}

void CTALKER::NotifyAudio(CAudioDecoder& decoder, const tagINTERCOM_RPK_AUDIO& datagram) {
    std::memcpy(decoder.Room(), datagram.data, sizeof(datagram.data));
    const int length = decoder.Decode(sizeof(datagram.data));
    if (length <= 0) { return; }
    uint32_t sender = 0;
    std::memcpy(&sender, datagram.data + offsetof(_vxa_data_packet_t_mcast, node), sizeof(sender));
    const auto stationID = static_cast<int>(sender);
    if (IsTalkingWithRPK(stationID) != 1) { return; }
    m_app.Callbacks().IntercomAudio(stationID, {decoder.Audio(), length});
}
