#include "player/task_status.h"

#include <algorithm>

CTaskStatusTable::Entry* CTaskStatusTable::FindLocked(int taskID) const {
    const auto found = m_byID.find(taskID);
    return found == m_byID.end() ? nullptr : &*found->second;
}

CTaskStatusTable::Entry& CTaskStatusTable::AppendLocked(int taskID) {
    m_entries.emplace_back();
    m_entries.back().record.taskID = taskID;
    m_byID[taskID] = std::prev(m_entries.end());
    return m_entries.back();
}

void CTaskStatusTable::EraseLocked(int taskID) {
    const auto found = m_byID.find(taskID);
    if (found == m_byID.end()) { return; }
    m_entries.erase(found->second);
    m_byID.erase(found);
}

CTaskStatusTable::Acceptance CTaskStatusTable::Accept(int taskID, std::optional<int> limit, TaskInstance& instance) {
    const CQBSemLocker lock(&m_lock);
    Entry* entry = FindLocked(taskID);
    if (entry != nullptr && IsRunning(entry->record.status)) { return Acceptance::AlreadyRunning; }
    const bool limitReached = limit && RunningLocked() >= *limit;
    if (entry == nullptr) { entry = &AppendLocked(taskID); }
    instance = ++m_lastInstance;
    entry->instance = instance;
    entry->record.status = limitReached ? kTaskNoFreeChannel : kTaskAccepted;
    if (limitReached) { return Acceptance::LimitReached; }
    m_threads.emplace(taskID, Thread{instance, false});
    return Acceptance::Accepted;
}

void CTaskStatusTable::Set(int taskID, short status) {
    const CQBSemLocker lock(&m_lock);
    if (status == kTaskNone) { return EraseLocked(taskID); }
    Entry* entry = FindLocked(taskID);
    (entry != nullptr ? *entry : AppendLocked(taskID)).record.status = status;
}

void CTaskStatusTable::Set(const tagTASK_STATUS& record) {
    const CQBSemLocker lock(&m_lock);
    if (record.status == kTaskNone) { return EraseLocked(record.taskID); }
    Entry* entry = FindLocked(record.taskID);
    (entry != nullptr ? *entry : AppendLocked(record.taskID)).record = record;
}

short CTaskStatusTable::Remove(int taskID) {
    const CQBSemLocker lock(&m_lock);
    const Entry* entry = FindLocked(taskID);
    const short status = entry == nullptr ? kTaskNone : entry->record.status;
    EraseLocked(taskID);
    return status;
}

bool CTaskStatusTable::BeginBroadcast(TaskInstance instance, const tagTASK_STATUS& record) {
    const CQBSemLocker lock(&m_lock);
    Entry* entry = FindLocked(record.taskID);
    if (entry == nullptr || entry->instance != instance || !IsRunning(entry->record.status)) { return false; }
    entry->record = record;
    return true;
}

short CTaskStatusTable::Conclude(int taskID, TaskInstance instance, short status) {
    const CQBSemLocker lock(&m_lock);
    const auto [first, last] = m_threads.equal_range(taskID);
    std::for_each(first, last, [instance](auto& thread) {
        thread.second.concluded = thread.second.concluded || thread.second.instance == instance;
    });
    if (IsSupersededLocked(taskID, instance)) { return kTaskNone; }
    if (status == kTaskNone) {
        EraseLocked(taskID);
        return status;
    }
    // A task that was stopped and then failed shows its failure all the same.
    Entry* entry = FindLocked(taskID);
    if (entry == nullptr) { entry = &AppendLocked(taskID); }
    entry->instance = instance;
    entry->record.status = status;
    return status;
}

void CTaskStatusTable::Forget(int taskID, TaskInstance instance) {
    const CQBSemLocker lock(&m_lock);
    const auto [first, last] = m_threads.equal_range(taskID);
    const auto thread =
        std::find_if(first, last, [instance](const auto& other) { return other.second.instance == instance; });
    if (thread != last) { m_threads.erase(thread); }
}

bool CTaskStatusTable::IsStopped(int taskID, TaskInstance instance) const {
    const CQBSemLocker lock(&m_lock);
    const Entry* entry = FindLocked(taskID);
    return entry == nullptr || entry->instance != instance || entry->record.status < kTaskAccepted;
}

bool CTaskStatusTable::IsSupersededLocked(int taskID, TaskInstance instance) const {
    const Entry* entry = FindLocked(taskID);
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
        return thread.second.instance == instance && !thread.second.concluded;
    });
}

TaskInstance CTaskStatusTable::Owner(int taskID) const {
    const CQBSemLocker lock(&m_lock);
    const Entry* entry = FindLocked(taskID);
    return entry == nullptr ? 0 : entry->instance;
}

CTaskStatusTable::Predecessor CTaskStatusTable::FindPredecessor(int taskID, TaskInstance instance) const {
    const CQBSemLocker lock(&m_lock);
    const auto [first, last] = m_threads.equal_range(taskID);
    Predecessor found = Predecessor::None;
    for (auto thread = first; thread != last; ++thread) {
        if (thread->second.instance >= instance) { continue; }
        found = std::max(found, thread->second.concluded ? Predecessor::TellingTheHost : Predecessor::Working);
    }
    return found;
}

bool CTaskStatusTable::HasThreads() const {
    const CQBSemLocker lock(&m_lock);
    return !m_threads.empty();
}

short CTaskStatusTable::Status(int taskID) const {
    const CQBSemLocker lock(&m_lock);
    const Entry* entry = FindLocked(taskID);
    return entry == nullptr ? kTaskNone : entry->record.status;
}

std::optional<tagTASK_STATUS> CTaskStatusTable::Find(int taskID) const {
    const CQBSemLocker lock(&m_lock);
    const Entry* entry = FindLocked(taskID);
    return entry == nullptr ? std::nullopt : std::optional(entry->record);
}

int CTaskStatusTable::RunningLocked() const {
    return static_cast<int>(std::count_if(m_entries.begin(), m_entries.end(),
                                          [](const Entry& entry) { return IsRunning(entry.record.status); }));
}

int CTaskStatusTable::RunningTasks() const {
    const CQBSemLocker lock(&m_lock);
    return RunningLocked();
}

int CTaskStatusTable::ListRunning(int* ids, int maxCount) const {
    const CQBSemLocker lock(&m_lock);
    int written = 0;
    for (const Entry& entry : m_entries) {
        if (written < maxCount && IsRunning(entry.record.status)) { ids[written++] = entry.record.taskID; }
    }
    return static_cast<int>(m_entries.size());
}
