#include "zcu/task_zones.h"

#include <time.h>

#include <algorithm>

PlayInstance CTaskZones::New(int source, int virtualZCU, const _vxa_play_task_req_t_V2& request) {
    const CQBSemLocker lock(&m_lock);
    const auto task = static_cast<int>(request.taskID);
    const tagDEVICE_ZONE zone{static_cast<uint32_t>(virtualZCU), ++m_lastInstance, request.zoneMask};
    const auto found = std::find_if(m_tasks.begin(), m_tasks.end(),
                                    [=](const tagVIRTUAL_TASK_ZONES& known) { return known.IsOf(source, task); });
    if (found != m_tasks.end()) {
        found->zones.push_back(zone);
        return zone.instance;
    }
    if (m_tasks.size() == kMaxVirtualTasks) { m_tasks.pop_front(); }
    m_tasks.push_back({request.taskID, static_cast<uint32_t>(source), {zone}, request, time(nullptr)});
    return zone.instance;
}

// A task that nobody holds any more is gone.
template <typename IsTask, typename IsZone> int CTaskZones::EraseZones(IsTask isTask, IsZone isZone) {
    const CQBSemLocker lock(&m_lock);
    std::size_t erased = 0;
    for (tagVIRTUAL_TASK_ZONES& task : m_tasks) {
        if (isTask(task)) { erased += std::erase_if(task.zones, isZone); }
    }
    std::erase_if(m_tasks, [](const tagVIRTUAL_TASK_ZONES& task) { return task.zones.empty(); });
    return erased > 0 ? 1 : 0;
}

int CTaskZones::Remove(int source, int task, int virtualZCU, RemoveZones mode) {
    return EraseZones(
        [=](const tagVIRTUAL_TASK_ZONES& known) {
            return mode == RemoveZones::OfEveryTask || known.IsOf(source, task);
        },
        [=](const tagDEVICE_ZONE& zone) { return mode == RemoveZones::WholeTask || zone == virtualZCU; });
}

int CTaskZones::RemoveInstance(int source, int task, int virtualZCU, PlayInstance instance) {
    return EraseZones([=](const tagVIRTUAL_TASK_ZONES& known) { return known.IsOf(source, task); },
                      [=](const tagDEVICE_ZONE& zone) { return zone == virtualZCU && zone.instance == instance; });
}

const tagVIRTUAL_TASK_ZONES* CTaskZones::FindLocked(int source, int task) const {
    const auto found = std::find_if(m_tasks.begin(), m_tasks.end(),
                                    [=](const tagVIRTUAL_TASK_ZONES& known) { return known.IsOf(source, task); });
    return found == m_tasks.end() ? nullptr : &*found;
}

std::vector<int> CTaskZones::Controllers(int source, int task) const {
    const CQBSemLocker lock(&m_lock);
    std::vector<int> controllers;
    if (const tagVIRTUAL_TASK_ZONES* found = FindLocked(source, task)) {
        for (const tagDEVICE_ZONE& zone : found->zones) { controllers.push_back(static_cast<int>(zone.virtualZCUID)); }
    }
    return controllers;
}

bool CTaskZones::IsCurrent(int source, int task, int virtualZCU, PlayInstance instance) const {
    const CQBSemLocker lock(&m_lock);
    const tagVIRTUAL_TASK_ZONES* found = FindLocked(source, task);
    return found != nullptr && std::any_of(found->zones.begin(), found->zones.end(), [=](const tagDEVICE_ZONE& zone) {
               return zone == virtualZCU && zone.instance == instance;
           });
}

std::optional<PlayedTask> CTaskZones::FindTask(int virtualZCU) const {
    const CQBSemLocker lock(&m_lock);
    for (const tagVIRTUAL_TASK_ZONES& task : m_tasks) {
        if (std::find(task.zones.begin(), task.zones.end(), virtualZCU) == task.zones.end()) { continue; }
        return PlayedTask{static_cast<uint16_t>(task.sourceID), static_cast<uint16_t>(task.taskID),
                          task.request.multicastIP, task.request.multicastPort};
    }
    return std::nullopt;
}
