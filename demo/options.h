// Command line of the sample host.
#pragma once

#include <string>

struct DemoOptions {
    std::string nic = "192.168.1.166";
    std::string node = "9500";
    std::string firstMulticast = "225.0.0.1";
    std::string zcuIP = "192.168.1.33";
    std::string taskFile = "demo/announcement.wav";
    std::string recovery = "0";
    bool help = false;
};

extern const char* const kDemoUsage;

/// @return false for an option that does not exist or has no value
bool ParseOptions(int argc, char** argv, DemoOptions& options);
