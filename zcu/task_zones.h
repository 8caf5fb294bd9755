// What the virtual zone controllers play.
#pragma once

#include "common/sem.h"
#include "zcu/virtual_records.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <vector>

inline constexpr std::size_t kMaxVirtualTasks = 10'240;

/// Which virtual controllers a removal takes out of which task.
enum class RemoveZones {
    OfTask = 1,      // the controller, out of the task of this source
    WholeTask = 2,   // the whole task of this source
    OfEveryTask = 3, // the controller, out of whatever it plays
};

/// What a virtual controller plays.
struct PlayedTask {
    uint16_t sourceID;
    uint16_t taskID;
    uint32_t multicastIP;
    uint32_t multicastPort;
};

/// The tasks that virtual controllers play, at most kMaxVirtualTasks; beyond that the oldest goes. Any thread.
class CTaskZones {
public:
    /// Enters a controller into the task that a request names. @return what tells this entry from later ones
    PlayInstance New(int source, int virtualZCU, const _vxa_play_task_req_t_V2& request);
    /// @return 1 when something was removed, else 0
    int Remove(int source, int task, int virtualZCU, RemoveZones mode);
    /// Removes the controller from the task if it is still there for the request of that instance.
    int RemoveInstance(int source, int task, int virtualZCU, PlayInstance instance);
    /// @return the controllers that hold the task, in the order in which they entered
    std::vector<int> Controllers(int source, int task) const;
    /// @return whether the controller holds the task for the request of that instance
    bool IsCurrent(int source, int task, int virtualZCU, PlayInstance instance) const;
    /// @return the first task that the controller holds
    std::optional<PlayedTask> FindTask(int virtualZCU) const;

private:
    template <typename IsTask, typename IsZone> int EraseZones(IsTask isTask, IsZone isZone);
    const tagVIRTUAL_TASK_ZONES* FindLocked(int source, int task) const K740_REQUIRES(m_lock);

    mutable CQBSem m_lock;
    std::deque<tagVIRTUAL_TASK_ZONES> m_tasks K740_GUARDED_BY(m_lock);
    PlayInstance m_lastInstance K740_GUARDED_BY(m_lock) = 0;
};
