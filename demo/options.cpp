#include "demo/options.h"

#include <charconv>
#include <functional>
#include <map>
#include <string_view>

const char* const kDemoUsage =
    "usage: k740demo [options]\n"
    "Streams a file to zone 1 of zone controller 33, monitors that zone, answers intercom calls and reports the state\n"
    "of a train.\n"
    "  --nic ADDRESS              network interface for multicast (192.168.1.166)\n"
    "  --node ID                  own device ID, 9500..9999 (9500)\n"
    "  --first-multicast ADDRESS  first multicast group (225.0.0.1)\n"
    "  --zcu-ip ADDRESS           zone controller 33 (192.168.1.33)\n"
    "  --rpk-ip ADDRESS           paging station 5000 (192.168.8.99)\n"
    "  --rpk-ptt ADDRESS          its push-to-talk group (224.0.6.1)\n"
    "  --task-file FILE           what zone 1 hears, 44.1 kHz 16-bit mono (/home/1111.wav)\n"
    "  --intercom-file FILE       what callers hear, 44.1 kHz 16-bit mono (/home/test441.wav)\n"
    "  --duration SECONDS         ends after this time; 0 runs for ever (0)\n"
    "  --help                     shows this text\n";

namespace {

bool ReadNumber(std::string_view text, int& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() && number >= 0;
}

} // namespace

bool ParseOptions(int argc, char** argv, DemoOptions& options) {
    const auto text = [](std::string& target) {
        return [&target](std::string_view value) {
            target = value;
            return true;
        };
    };
    const auto number = [](int& target) {
        return [&target](std::string_view value) { return ReadNumber(value, target); };
    };
    const std::map<std::string_view, std::function<bool(std::string_view)>> known{
        {"--nic", text(options.nic)},
        {"--node", number(options.node)},
        {"--first-multicast", text(options.firstMulticast)},
        {"--zcu-ip", text(options.zcuIP)},
        {"--rpk-ip", text(options.rpkIP)},
        {"--rpk-ptt", text(options.rpkPTT)},
        {"--task-file", text(options.taskFile)},
        {"--intercom-file", text(options.intercomFile)},
        {"--duration", number(options.durationSeconds)}};
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        const auto found = known.find(name);
        if (name == "--help") {
            options.help = true;
        } else if (found == known.end() || i + 1 == argc || !found->second(argv[++i])) {
            return false;
        }
    }
    return true;
}
