// Triggering the zone controllers of a task and releasing them again.
#pragma once

#include "common/worker.h"
#include "player/task_records.h"
#include "zcu/trigger_records.h"

#include <functional>
#include <string>
#include <vector>

class CK740ControlApp;

/// Results of waiting for zone controllers.
inline constexpr int kTriggered = 0;
inline constexpr int kTriggerWaitTimeout = -1;
inline constexpr int kAllTriggersFailed = -2;
inline constexpr int kNoTriggers = -3;

/// The zone controllers of one task. Each is triggered by a thread of its own, which goes on trying after this object
/// is gone. Belongs to one thread.
class CZoneTriggers {
public:
    /// @param task  what all controllers are asked alike; IDs and zones come from the zone string
    CZoneTriggers(CK740ControlApp& app, const tagTASK_STATUS& task);
    /// Leaves the threads that still run to themselves.
    ~CZoneTriggers();
    CZoneTriggers(const CZoneTriggers&) = delete;
    CZoneTriggers& operator=(const CZoneTriggers&) = delete;

    /// Starts a thread for every item of the zone string.
    void Start(const std::string& zones, void* (*thread)(void*));

    /// Waits until one controller has joined, at most 4 s; then leaves the threads that still run to themselves.
    /// @param giveUp  asked in every pass; true ends the wait as if a controller had joined
    /// @return        kTriggered, or one of the failures above
    int WaitForTriggerZCU(const std::function<bool()>& giveUp);

    /// @return the controllers of the zone string, in its order, repeated ones repeated
    const std::vector<int>& ControllerIDs() const { return m_controllerIDs; }
    /// Sends the close-audio request to every controller. Threads that have not asked theirs to play by then do not
    /// any more.
    void CloseAudio();

private:
    void StartThread(const std::string& item, void* (*thread)(void*));
    int AwaitFirst(const std::function<bool()>& giveUp);
    bool JoinEnded();

    CK740ControlApp& m_app;
    tagZCU_PARAM m_param;
    const TaskInstance m_instance;
    std::vector<int> m_controllerIDs;
    std::vector<pthread_t> m_running; // joinable
};
