#include "sim/audio_source.h"

#include "sim/audio_encoder.h"

#include <stdexcept>
#include <utility>

namespace k740::sim {
namespace {

constexpr std::chrono::microseconds kShortestEndlessPeriod{1000}; // below, sending may never catch up with the time

} // namespace

/// How far a stream has come.
struct AudioSource::Progress {
    Progress(const Endpoint& to, const AudioStream& what, std::uint32_t device)
        : receiver(to), stream(what), encoder(what.node.value_or(device), what.stream, what.type) {}

    [[nodiscard]] bool IsOver() const { return made == stream.count; }
    [[nodiscard]] bool LosesLatest() const { return stream.loseEvery > 0 && made % stream.loseEvery == 0; }

    Bytes Make() {
        const std::size_t index = made++;
        return stream.datagrams.empty() ? Pack(encoder.Encode(NextSamples()))
                                        : stream.datagrams[index % stream.datagrams.size()];
    }

    std::vector<std::int16_t> NextSamples() {
        std::vector<std::int16_t> samples(encoder.SamplesPerDatagram());
        if (stream.pcm.empty()) { return samples; }
        for (std::int16_t& sample : samples) {
            sample = stream.pcm[position];
            position = (position + 1) % stream.pcm.size();
        }
        return samples;
    }

    const Endpoint receiver;
    const AudioStream stream;
    AudioEncoder encoder;
    std::size_t position = 0; // in the PCM
    std::size_t made = 0;     // datagrams, lost ones included
    Clock::time_point due = Clock::now();
};

AudioSource::AudioSource(Reactor& reactor, const UdpSocket& socket, std::uint32_t device, OnChange onChange)
    : m_reactor(reactor), m_socket(socket), m_device(device), m_onChange(std::move(onChange)) {}

AudioSource::~AudioSource() = default;

void AudioSource::Start(const Endpoint& receiver, const AudioStream& stream) {
    if (!stream.count && stream.period < kShortestEndlessPeriod) {
        throw std::invalid_argument("a stream without end needs a period of 1 ms at least");
    }
    m_reactor.Run([&] {
        const auto progress = std::make_shared<Progress>(receiver, stream, m_device);
        End();
        m_sent = 0;
        if (!progress->IsOver()) { SendNext(progress); }
    });
}

void AudioSource::Stop() {
    m_reactor.Run([&] { End(); });
}

void AudioSource::End() {
    if (const auto ended = std::exchange(m_progress, nullptr)) { Tell(false, ended->receiver); }
}

void AudioSource::Tell(bool begins, const Endpoint& receiver) const {
    if (m_onChange) { m_onChange(begins, receiver, m_sent); }
}

bool AudioSource::IsStreaming() const {
    bool streaming = false;
    m_reactor.Run([&] { streaming = m_progress != nullptr; });
    return streaming;
}

std::size_t AudioSource::Sent() const {
    std::size_t sent = 0;
    m_reactor.Run([&] { sent = m_sent; });
    return sent;
}

void AudioSource::SendNext(const std::shared_ptr<Progress>& progress) {
    const Bytes datagram = progress->Make();
    if (!progress->LosesLatest()) {
        m_socket.Send(datagram, progress->receiver);
        ++m_sent;
    }
    m_progress = progress;
    if (progress->made == 1) { Tell(true, progress->receiver); }
    if (progress->IsOver()) { return End(); }
    progress->due += progress->stream.period;
    m_reactor.At(progress->due, [this, life = std::weak_ptr(progress)] {
        if (const auto current = life.lock()) { SendNext(current); }
    });
}

} // namespace k740::sim
