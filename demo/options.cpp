#include "demo/options.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

const char* const kDemoUsage = "usage: k740demo [options]\n"
                               "Broadcasts a WAV file to zone 1 of zone controller 33.\n"
                               "  --nic ADDRESS              network interface for multicast (192.168.1.166)\n"
                               "  --node ID                  own device ID, 9500..9999 (9500)\n"
                               "  --first-multicast ADDRESS  first multicast group (225.0.0.1)\n"
                               "  --zcu-ip ADDRESS           zone controller 33 (192.168.1.33)\n"
                               "  --task-file FILE           44.1 kHz 16-bit mono WAV (demo/announcement.wav)\n"
                               "  --recovery 0|1             1: zones return to what they played before (0)\n"
                               "  --help                     show this text\n";

bool ParseOptions(int argc, char** argv, DemoOptions& options) {
    const std::pair<std::string_view, std::string*> known[] = {{"--nic", &options.nic},
                                                               {"--node", &options.node},
                                                               {"--first-multicast", &options.firstMulticast},
                                                               {"--zcu-ip", &options.zcuIP},
                                                               {"--task-file", &options.taskFile},
                                                               {"--recovery", &options.recovery}};
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        const auto* found = std::find_if(std::begin(known), std::end(known),
                                         [name](const auto& option) { return option.first == name; });
        if (name == "--help") {
            options.help = true;
        } else if (found != std::end(known) && i + 1 < argc) {
            *found->second = argv[++i];
        } else {
            return false;
        }
    }
    return true;
}
