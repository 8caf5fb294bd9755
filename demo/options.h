// Command line of the sample host. Without arguments everything is as on its test bench; options only override.
#pragma once

#include <string>

struct DemoOptions {
    std::string nic = "192.168.1.166";
    int node = 9500;
    std::string firstMulticast = "225.0.0.1";
    std::string zcuIP; // empty: 192.168.1. and the controller's ID
    std::string rpkIP = "192.168.8.99";
    std::string rpkPTT = "224.0.6.1";
    std::string taskFile = "/home/1111.wav";
    std::string intercomFile = "/home/test441.wav";
    int durationSeconds = 0; // 0: for ever
    bool help = false;
};

extern const char* const kDemoUsage;

/// @return false for an option that does not exist or has no usable value
bool ParseOptions(int argc, char** argv, DemoOptions& options);
