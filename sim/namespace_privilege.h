// The right to make network namespaces, for a process that its user started without it.
#pragma once

namespace k740::sim {

/// Moves the calling process into an empty network namespace of its own, so that nothing it sends can leave the
/// machine, and makes sure that it may make further ones (PrivateNetwork).
///
/// Call it first in main. A process that lacks the right starts itself again (/proc/self/exe, same arguments) as the
/// root user of a new user namespace; this call then does not return: it waits for that process and ends as it ended,
/// with the same exit status or by the same signal. Meanwhile it passes on what asks for the end (EndSignalSet), and
/// SIGTERM comes when it is killed itself. Where user namespaces are refused it says so in one sentence on
/// standard error and exits with status 1.
///
/// @param argv  main's arguments, ended by a null pointer
void EnsureNamespacePrivilege(char** argv);

} // namespace k740::sim
