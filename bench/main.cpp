// Runs the benchmarks, those of whole paths in a private network and a temporary directory.
#include "bench/station.h"
#include "sim/namespace_privilege.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>

namespace {
std::unique_ptr<k740::bench::Station> g_station;
}

k740::bench::Station& k740::bench::TheStation() {
    return *g_station;
}

int main(int argc, char** argv) {
    k740::sim::EnsureNamespacePrivilege(argv);
    benchmark::Initialize(&argc, argv);
    const auto directory = std::filesystem::temp_directory_path() / "k740_bench";
    std::filesystem::create_directories(directory);
    std::filesystem::current_path(directory); // the library keeps its log here
    try {
        g_station = std::make_unique<k740::bench::Station>();
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "k740_bench: %s\n", error.what());
        return 1;
    }
    return 0;
}
