// Runs commands of ip(8) in the calling thread's network namespace.
#pragma once

#include <string>

namespace k740::sim {

/// How the commands name the namespace that was handed to RunIpBatch.
inline constexpr const char* kIpBatchNamespace = "/proc/self/fd/3";

/// Runs one ip process over all commands.
///
/// @param commands       one command per line, without the leading "ip"
/// @param namespaceFile  descriptor of a network namespace that the commands name as kIpBatchNamespace; -1 for none
/// @throws std::runtime_error with ip's own words when a command fails, or when there is no ip
void RunIpBatch(const std::string& commands, int namespaceFile = -1);

} // namespace k740::sim
