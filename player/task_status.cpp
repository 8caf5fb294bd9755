#include "player/task_status.h"

#include <algorithm>

tagTASK_STATUS* CTaskStatusTable::FindLocked(int taskID) const {
    const auto found = m_byID.find(taskID);
    return found == m_byID.end() ? nullptr : &*found->second;
}

tagTASK_STATUS& CTaskStatusTable::AppendLocked(int taskID) {
    Entries fresh(1);
    fresh.front().taskID = taskID;
    m_byID.emplace(taskID, fresh.begin()); // the last step that can fail
    m_entries.splice(m_entries.end(), fresh);
    return m_entries.back();
}

void CTaskStatusTable::SetTaskStatus(int taskID, short status, TaskInstance instance) {
    tagTASK_STATUS* entry = FindLocked(taskID);
    if (status != kTaskNone) {
        if (entry == nullptr) { entry = &AppendLocked(taskID); }
        entry->status = status;
        entry->instance = instance;
    } else if (entry != nullptr) {
        m_entries.erase(m_byID[taskID]);
        m_byID.erase(taskID);
    }
}

CTaskStatusTable::Acceptance CTaskStatusTable::Accept(int taskID, std::optional<int> limit, TaskInstance& instance) {
    const CQBSemLocker lock(&m_lock);
    const tagTASK_STATUS* entry = FindLocked(taskID);
    if (entry != nullptr && IsRunning(entry->status)) { return Acceptance::AlreadyRunning; }
    const bool limitReached = limit && GetRunningTaskCounter() >= *limit;
    Threads thread; // made before anything is noted, so that for want of memory nothing is
    if (!limitReached) { thread.emplace(taskID, Thread{m_lastInstance + 1}); }
    SetTaskStatus(taskID, limitReached ? kTaskNoFreeChannel : kTaskAccepted, m_lastInstance + 1);
    m_threads.merge(thread);
    instance = ++m_lastInstance;
    return limitReached ? Acceptance::LimitReached : Acceptance::Accepted;
}

short CTaskStatusTable::Remove(int taskID) {
    const CQBSemLocker lock(&m_lock);
    const tagTASK_STATUS* entry = FindLocked(taskID);
    const short status = entry == nullptr ? kTaskNone : entry->status;
    SetTaskStatus(taskID, kTaskNone, 0);
    return status;
}

bool CTaskStatusTable::BeginBroadcast(const tagTASK_STATUS& record) {
    const CQBSemLocker lock(&m_lock);
    tagTASK_STATUS* entry = FindLocked(record.taskID);
    if (entry == nullptr || entry->instance != record.instance || !IsRunning(entry->status)) { return false; }
    *entry = record;
    return true;
}

void CTaskStatusTable::EnterPhase(int taskID, TaskInstance instance, Phase phase) {
    const auto [first, last] = m_threads.equal_range(taskID);
    std::for_each(first, last, [&](auto& thread) {
        if (thread.second.instance == instance) { thread.second.phase = phase; }
    });
}

void CTaskStatusTable::BeginClosing(int taskID, TaskInstance instance) {
    const CQBSemLocker lock(&m_lock);
    EnterPhase(taskID, instance, Phase::Closing);
}

// A task that was stopped and then failed shows its failure all the same.
short CTaskStatusTable::Conclude(int taskID, TaskInstance instance, short status) {
    const CQBSemLocker lock(&m_lock);
    EnterPhase(taskID, instance, Phase::Concluded);
    if (IsSupersededLocked(taskID, instance)) { return kTaskNone; }
    SetTaskStatus(taskID, status, instance);
    return status;
}

void CTaskStatusTable::Forget(int taskID, TaskInstance instance) {
    const CQBSemLocker lock(&m_lock);
    const auto [first, last] = m_threads.equal_range(taskID);
    const auto thread =
        std::find_if(first, last, [instance](const auto& other) { return other.second.instance == instance; });
    if (thread != last) { m_threads.erase(thread); }
}

bool CTaskStatusTable::IsTaskStoped(int taskID, TaskInstance instance) const {
    const CQBSemLocker lock(&m_lock);
    const tagTASK_STATUS* entry = FindLocked(taskID);
    return entry == nullptr || entry->instance != instance || entry->status < kTaskAccepted;
}

bool CTaskStatusTable::IsSupersededLocked(int taskID, TaskInstance instance) const {
    const tagTASK_STATUS* entry = FindLocked(taskID);
    const auto [first, last] = m_threads.equal_range(taskID);
    return (entry != nullptr && entry->instance > instance) ||
           std::any_of(first, last, [instance](const auto& other) { return other.second.instance > instance; });
}

bool CTaskStatusTable::IsSuperseded(int taskID, TaskInstance instance) const {
    const CQBSemLocker lock(&m_lock);
    return IsSupersededLocked(taskID, instance);
}

bool CTaskStatusTable::IsOver(int taskID, TaskInstance instance) const {
    const CQBSemLocker lock(&m_lock);
    const auto [first, last] = m_threads.equal_range(taskID);
    return std::none_of(first, last, [instance](const auto& thread) {
        return thread.second.instance == instance && thread.second.phase == Phase::Playing;
    });
}

CTaskStatusTable::Predecessor CTaskStatusTable::FindPredecessor(int taskID, TaskInstance instance) const {
    const CQBSemLocker lock(&m_lock);
    const auto [first, last] = m_threads.equal_range(taskID);
    Predecessor found = Predecessor::None;
    for (auto thread = first; thread != last; ++thread) {
        if (thread->second.instance >= instance) { continue; }
        const bool concluded = thread->second.phase == Phase::Concluded;
        found = std::max(found, concluded ? Predecessor::TellingTheHost : Predecessor::Working);
    }
    return found;
}

bool CTaskStatusTable::HasThreads() const {
    const CQBSemLocker lock(&m_lock);
    return !m_threads.empty();
}

short CTaskStatusTable::GetTaskStatus(int taskID) const {
    const CQBSemLocker lock(&m_lock);
    const tagTASK_STATUS* entry = FindLocked(taskID);
    return entry == nullptr ? kTaskNone : entry->status;
}

int CTaskStatusTable::GetTaskStatus(int taskID, tagTASK_STATUS& out) const {
    const CQBSemLocker lock(&m_lock);
    const tagTASK_STATUS* entry = FindLocked(taskID);
    out = entry == nullptr ? tagTASK_STATUS{} : *entry;
    return entry == nullptr ? -1 : 0;
}

int CTaskStatusTable::GetRunningTaskCounter() const {
    return static_cast<int>(std::count_if(m_entries.begin(), m_entries.end(),
                                          [](const tagTASK_STATUS& entry) { return IsRunning(entry.status); }));
}

int CTaskStatusTable::ListRunning(int* ids, int maxCount) const {
    const CQBSemLocker lock(&m_lock);
    int written = 0;
    for (const tagTASK_STATUS& entry : m_entries) {
        if (written < maxCount && IsRunning(entry.status)) { ids[written++] = entry.taskID; }
    }
    return static_cast<int>(m_entries.size());
}
