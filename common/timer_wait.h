// A timed wait on one condition variable of the process.
#pragma once

/// Waits until ms milliseconds have passed, sometimes less: a spurious wake-up of the condition variable ends it, too.
/// @param ms  milliseconds; ms * 1000 is formed in 32 bits
void timer_wait(unsigned ms);

/// Prepares the module's timer. It arms nothing: a library must leave SIGALRM to its host.
/// @return 0
int initialize_out_timer();
