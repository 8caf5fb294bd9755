#include "sim/triggers.h"

#include "sim/packet_names.h"
#include "sim/paging_records.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

namespace k740::sim {
namespace {

using Kind = Event::Kind;

const std::map<Kind, std::string>& EventNames() {
    static const std::map<Kind, std::string> names{{Kind::Received, "received"},
                                                   {Kind::Sent, "sent"},
                                                   {Kind::Lost, "lost"},
                                                   {Kind::JoinedGroup, "joined"},
                                                   {Kind::LeftGroup, "left"},
                                                   {Kind::EndOfStream, "end-of-stream"},
                                                   {Kind::AudioBegins, "audio-begins"},
                                                   {Kind::AudioEnds, "audio-ends"},
                                                   {Kind::IntercomBegins, "intercom-begins"},
                                                   {Kind::IntercomEnds, "intercom-ends"},
                                                   {Kind::StreamBegins, "stream-begins"},
                                                   {Kind::StreamEnds, "stream-ends"},
                                                   {Kind::Command, "command"}};
    return names;
}

EventFilter CallAnswered(std::uint8_t code) {
    return [code, answered = Received(command::kCallAnswer)](const Event& event) {
        return answered(event) && event.packet->payload[0] == code;
    };
}

std::optional<EventFilter> NamedEvent(const std::string& on) {
    for (const auto& [kind, name] : EventNames()) {
        const bool isAboutOnePacket = kind == Kind::Received || kind == Kind::Sent || kind == Kind::Lost;
        if (name != on || isAboutOnePacket || kind == Kind::Command) { continue; }
        return [kind = kind](const Event& event) { return event.kind == kind; };
    }
    return std::nullopt;
}

EventFilter Named(const std::string& on) {
    const std::map<std::string, EventFilter> triggers{{"play", Received(command::kPlay)},
                                                      {"close", Received(command::kCloseAudio)},
                                                      {"ring", CallAnswered(call::kRinging)},
                                                      {"accept", CallAnswered(call::kAccepted)},
                                                      {"hang-up", CallAnswered(call::kHungUp)}};
    if (const auto found = triggers.find(on); found != triggers.end()) { return found->second; }
    if (const auto code = PacketCode(on)) { return Received(*code); }
    if (auto event = NamedEvent(on)) { return *event; }
    throw std::invalid_argument("\"" + on + "\" is nothing to react on");
}

} // namespace

EventFilter MakeTrigger(const std::string& on, std::optional<std::uint32_t> device) {
    EventFilter named = Named(on);
    if (!device) { return named; }
    return [named = std::move(named), id = *device](const Event& event) { return event.device == id && named(event); };
}

std::string EventName(Event::Kind kind) {
    return EventNames().at(kind);
}

} // namespace k740::sim
