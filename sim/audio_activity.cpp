#include "sim/audio_activity.h"

#include <utility>

namespace k740::sim {

AudioActivity::AudioActivity(Reactor& reactor, OnChange onChange)
    : m_reactor(reactor), m_onChange(std::move(onChange)) {}

void AudioActivity::Heard(Clock::time_point arrival) {
    if (m_last) {
        *m_last = arrival;
        return;
    }
    m_last = std::make_shared<Clock::time_point>(arrival);
    LookAgain();
    m_onChange(true, arrival);
}

void AudioActivity::End() {
    if (const auto last = std::exchange(m_last, nullptr)) { m_onChange(false, *last); }
}

void AudioActivity::LookAgain() {
    m_reactor.At(*m_last + kSilenceThatEndsAudio, [this, life = std::weak_ptr(m_last)] {
        const auto last = life.lock();
        if (!last) { return; }
        if (Clock::now() - *last >= kSilenceThatEndsAudio) { return End(); }
        LookAgain();
    });
}

} // namespace k740::sim
