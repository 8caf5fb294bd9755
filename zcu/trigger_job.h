// What a thread that triggers one zone controller is given, and what it answers.
#pragma once

#include "zcu/trigger_records.h"

class CZCU;

/// Made with new by the player; owned and freed by the thread.
struct TriggerJob {
    CZCU& zcu;
    tagZCU_PARAM param;
};

/// Exit codes of a trigger thread.
inline void* const kTriggerThreadSucceeded = nullptr;
inline void* const kTriggerThreadFailed = reinterpret_cast<void*>(1);
