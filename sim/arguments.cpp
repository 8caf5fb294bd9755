#include "sim/arguments.h"

#include "sim/device_kind.h"

#include <algorithm>
#include <charconv>
#include <iomanip>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace k740::sim {
namespace {

constexpr std::uint32_t kAllZones = 0xFF;

} // namespace

std::optional<std::uint32_t> ReadNumber(std::string_view text) {
    const bool hexadecimal = text.starts_with("0x");
    if (hexadecimal) { text.remove_prefix(2); }
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, hexadecimal ? 16 : 10);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

Arguments::Arguments(const std::string& text) {
    std::istringstream words(text);
    while (!(words >> std::ws).eof()) {
        std::string word;
        if (!(words >> std::quoted(word))) { throw std::invalid_argument("a quotation mark is not closed"); }
        m_words.push_back(word);
    }
}

bool Arguments::Skip(const std::string& word) {
    if (AtEnd() || m_words[m_next] != word) { return false; }
    ++m_next;
    return true;
}

void Arguments::ExpectEnd() const {
    if (!AtEnd()) { throw std::invalid_argument("\"" + Peek() + "\" is too much"); }
}

std::string Arguments::Next(const std::string& what) {
    if (AtEnd()) { throw std::invalid_argument(what + " is missing"); }
    return m_words[m_next++];
}

std::uint32_t Arguments::NextNumber(const std::string& what, std::uint32_t least, std::uint32_t most) {
    const std::string word = Next(what);
    const auto number = ReadNumber(word);
    if (number && *number >= least && *number <= most) { return *number; }
    throw std::invalid_argument(what + " \"" + word + "\" is not in " + std::to_string(least) + ".." +
                                std::to_string(most));
}

std::size_t Arguments::NextOf(const std::string& what, const std::vector<std::string>& choices) {
    const std::string word = Next(what);
    const auto found = std::find(choices.begin(), choices.end(), word);
    if (found != choices.end()) { return static_cast<std::size_t>(found - choices.begin()); }
    std::string known;
    for (const std::string& choice : choices) { known += (known.empty() ? "" : ", ") + choice; }
    throw std::invalid_argument(what + " \"" + word + "\" is none of " + known);
}

std::string Arguments::NextGroup() {
    return CheckedGroup(Next("the group"));
}

std::uint32_t Arguments::NextZones() {
    if (Skip("all")) { return kAllZones; }
    std::istringstream zones(Next("the zones"));
    std::uint32_t mask = 0;
    for (std::string zone; std::getline(zones, zone, ',');) {
        const auto number = ReadNumber(zone);
        if (!number || *number < 1 || *number > kZones) {
            throw std::invalid_argument("zone \"" + zone + "\" is not in 1..8");
        }
        mask |= 1U << (*number - 1);
    }
    return mask;
}

} // namespace k740::sim
