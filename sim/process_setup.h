// What a program settles about its process before it begins.
#pragma once

#include <sys/resource.h>

namespace k740::sim {

/// Makes sure that standard input, output and error exist (a file opened later must not become one of them), that a
/// reader who has gone is told as an error and not by SIGPIPE, and that children can be waited for.
/// @throws std::system_error when there is no /dev/null
void PrepareProcess();

/// Lets this process have as many descriptors as its user may give it: a controller has one for its requests and one
/// for each broadcast. @return the limit before
rlimit RaiseDescriptorLimit();

} // namespace k740::sim
