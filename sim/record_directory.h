// Where recordings go.
#pragma once

#include <string>

namespace k740::sim {

/// Makes the directory unless it is there.
/// @throws UsageError when no files can be made in it
void MakeRecordDirectory(const std::string& directory);

} // namespace k740::sim
