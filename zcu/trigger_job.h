// What a thread that triggers one zone controller is given, and what it answers.
#pragma once

#include "zcu/trigger_records.h"

#include <functional>

class CZCU;

/// Made with new by the player; owned and freed by the thread.
struct TriggerJob {
    CZCU& zcu;
    tagZCU_PARAM param;
    std::function<bool()> isOver;       // the task has ended: nothing is to be sent any more
    std::function<bool()> isSuperseded; // the task's ID has been given to a later one
};

/// Exit codes of a trigger thread.
inline void* const kTriggerThreadSucceeded = nullptr;
inline void* const kTriggerThreadFailed = reinterpret_cast<void*>(1);
