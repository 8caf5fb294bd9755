#include "sim/record_directory.h"

#include "sim/sim_options.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace k740::sim {

void MakeRecordDirectory(const std::string& directory) {
    if (directory.empty()) { throw UsageError("--record: the directory has no name"); }
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    // One that is there already is no error, one that cannot be written is.
    if (!error && ::access(directory.c_str(), W_OK | X_OK) != 0) { error.assign(errno, std::generic_category()); }
    if (!error && !std::filesystem::is_directory(directory)) {
        error = std::make_error_code(std::errc::not_a_directory);
    }
    if (error) { throw UsageError("--record: cannot write to \"" + directory + "\": " + error.message()); }
}

} // namespace k740::sim
