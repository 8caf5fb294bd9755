// The process's limit of open files.
#pragma once

/// Sets the soft and the hard limit of open files (RLIMIT_NOFILE, setrlimit(2)) to 50000, lowering larger ones too.
/// @return what setrlimit returned: 0, or -1 when the process may not raise its hard limit (nothing changes then)
int SetSystemLimit();
