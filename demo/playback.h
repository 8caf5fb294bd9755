// The threads that play: broadcast tasks and intercom calls.
#pragma once

#include "demo/options.h"

/// What the threads read; set before any of them is started. Never destroyed, because they run until the process ends.
DemoOptions& Options();

/// Task 1001: zone 1 of controller 33.
void ThreadPlay1();
/// Task 1002: zone 1 of the virtual controller 900.
void ThreadPlay2();
/// What the station hears that intercom 5500 talks to.
void ThreadIntercom();
