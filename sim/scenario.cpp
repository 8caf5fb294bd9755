#include "sim/scenario.h"

#include "sim/address.h"
#include "sim/command.h"
#include "sim/device_kind.h"
#include "sim/yaml_reader.h"

#include <limits>

namespace k740::sim {
namespace {

constexpr std::uint32_t kMostDevices = 1000; // of one entry
constexpr std::uint32_t kFirstNode = 9500;
constexpr std::uint32_t kLastNode = 9999;
constexpr std::uint32_t kMostId = 9999;

/// The address behind one; those that end with 0 or 255 are left out.
std::string NextAddress(const std::string& text) {
    std::uint32_t address = AddressNumber(text);
    do { ++address; } while ((address & 0xFF) == 0 || (address & 0xFF) == 0xFF);
    return AddressText(address);
}

/// Reads one file into the options.
class Loader {
public:
    Loader(const std::string& file, SimOptions& options) : m_reader(file), m_options(options) {}

    void Load() {
        const auto devices = [this](DeviceKind kind) {
            return [this, kind](const YAML::Node& list) {
                m_reader.ForEach(list, [=, this](const YAML::Node& entry) { LoadDevices(kind, entry); });
            };
        };
        m_reader.ForEachKey(
            m_reader.Load(),
            {{"station", [this](const auto& value) { Default(m_options.stationAddress, Address(value)); }},
             {"node",
              [this](const auto& value) {
                  Default(m_options.stationNode, m_reader.Whole(value, kFirstNode, kLastNode));
              }},
             {"status-period", [this](const auto& value) { Default(m_options.statusPeriod, m_reader.Time(value)); }},
             {"duration", [this](const auto& value) { Default(m_options.duration, m_reader.Time(value)); }},
             {"record", [this](const auto& value) { Default(m_options.recordDirectory, m_reader.Text(value)); }},
             {"zone-controllers", devices(DeviceKind::ZoneController)},
             {"paging-stations", devices(DeviceKind::PagingStation)},
             {"aux-interfaces", devices(DeviceKind::AuxInterface)},
             {"clients", devices(DeviceKind::Client)},
             {"timeline",
              [this](const auto& list) { m_reader.ForEach(list, [this](const auto& entry) { LoadEntry(entry); }); }},
             {"reactions", [this](const auto& list) {
                  m_reader.ForEach(list, [this](const auto& entry) { LoadReaction(entry); });
              }}});
    }

private:
    template <typename Value> static void Default(std::optional<Value>& option, const Value& value) {
        option = option.value_or(value);
    }

    void LoadDevices(DeviceKind kind, const YAML::Node& entry) {
        DeviceOption device;
        device.kind = kind;
        device.place = m_reader.Place(entry);
        std::uint32_t count = 1;
        std::vector<std::pair<YAML::Node, YAML::Node>> settings;
        m_reader.ForEachKey(entry,
                            {{"id", [&](const auto& value) { device.id = m_reader.Whole(value, 1, kMostId); }},
                             {"address", [&](const auto& value) { device.address = m_reader.Text(value); }},
                             {"count", [&](const auto& value) { count = m_reader.Whole(value, 1, kMostDevices); }}},
                            [&](const YAML::Node& key, const YAML::Node& value) { settings.emplace_back(key, value); });
        if (device.id == 0) { m_reader.Fail(entry, "the device has no id"); }
        if (device.address.empty()) { m_reader.Fail(entry, "the device has no address"); }
        for (; count > 0; --count, ++device.id, device.address = Following(entry, device.address)) {
            m_options.devices.push_back(device);
            for (const auto& [key, value] : settings) { LoadSetting(device.id, key, value); }
        }
    }

    [[nodiscard]] std::string Following(const YAML::Node& entry, const std::string& address) const {
        try {
            return NextAddress(address);
        } catch (const std::invalid_argument& error) { m_reader.Fail(entry, error.what()); }
    }

    [[nodiscard]] std::string Address(const YAML::Node& value) const {
        try {
            return CheckedHostAddress(m_reader.Text(value));
        } catch (const std::invalid_argument& error) { m_reader.Fail(value, error.what()); }
    }

    /// A key beside id, address and count is a command about the device, the value its further words; a list has one
    /// command per element.
    void LoadSetting(std::uint32_t id, const YAML::Node& key, const YAML::Node& value) {
        const std::string name = m_reader.Text(key);
        if (!IsDeviceCommand(name)) { m_reader.Fail(key, "\"" + name + "\" is not known here"); }
        const auto add = [&](const YAML::Node& words) {
            const std::string further = words.IsNull() ? std::string() : ' ' + m_reader.Text(words);
            m_options.settings.push_back(
                {name + ' ' + std::to_string(id) + further, m_reader.Place(words.IsNull() ? key : words)});
        };
        value.IsSequence() ? m_reader.ForEach(value, add) : add(value);
    }

    void LoadEntry(const YAML::Node& entry) {
        TimelineText text;
        std::optional<double> at;
        m_reader.ForEachKey(entry, {{"at", [&](const auto& value) { at = m_reader.Time(value); }},
                                    {"every", [&](const auto& value) { text.every = Period(value); }},
                                    {"until", [&](const auto& value) { text.until = m_reader.Time(value); }},
                                    {"do", [&](const auto& value) { text.command = Do(value); }}});
        if (!at && !text.every) { m_reader.Fail(entry, "the entry has neither \"at\" nor \"every\""); }
        RequireDo(entry, text.command);
        text.at = at.value_or(text.every.value_or(0));
        if (text.until && *text.until < text.at) { m_reader.Fail(entry, "the entry ends before it begins"); }
        m_options.timeline.push_back(text);
    }

    void LoadReaction(const YAML::Node& entry) {
        ReactionText text;
        m_reader.ForEachKey(entry,
                            {{"on", [&](const auto& value) { text.on = m_reader.Text(value); }},
                             {"device", [&](const auto& value) { text.device = m_reader.Whole(value, 1, kMostId); }},
                             {"after", [&](const auto& value) { text.after = m_reader.Time(value); }},
                             {"do", [&](const auto& value) { text.command = Do(value); }}});
        if (text.on.empty()) { m_reader.Fail(entry, "the reaction has no \"on\""); }
        RequireDo(entry, text.command);
        m_options.reactions.push_back(text);
    }

    [[nodiscard]] double Period(const YAML::Node& value) const {
        constexpr double kShortest = 0.01; // s
        const double period = m_reader.Time(value);
        if (period < kShortest) { m_reader.Fail(value, "the period is below 0.01 s"); }
        return period;
    }

    [[nodiscard]] CommandText Do(const YAML::Node& value) const {
        return {m_reader.Text(value), m_reader.Place(value)};
    }

    void RequireDo(const YAML::Node& entry, const CommandText& command) const {
        if (command.text.empty()) { m_reader.Fail(entry, "the entry has no \"do\""); }
    }

    const YamlReader m_reader;
    SimOptions& m_options;
};

} // namespace

void LoadScenario(const std::string& file, SimOptions& options) {
    Loader(file, options).Load();
    options.wavDirectory = std::filesystem::path(file).parent_path();
}

} // namespace k740::sim
