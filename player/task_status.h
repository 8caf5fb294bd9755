// The state of every task, and which acceptance of its ID a state belongs to.
#pragma once

#include "common/sem.h"
#include "player/task_records.h"

#include <list>
#include <map>
#include <optional>
#include <unordered_map>

/// Tasks with a state other than 0, in the order in which they came in. Any thread may call anything; the host is never
/// called from here.
///
/// A task's thread changes the state only while there is no later acceptance of the same ID: it is stopped when the
/// entry is gone, when its state is below 1, and when the entry belongs to another acceptance.
class CTaskStatusTable {
public:
    enum class Acceptance { Accepted, AlreadyRunning, LimitReached };

    /// Decides on a new task and notes it, in one step: state 1, or -1 when the limit is reached.
    /// @param limit     running tasks that may not be exceeded; none for tasks that are not limited
    /// @param instance  receives the number of this acceptance
    Acceptance Accept(int taskID, std::optional<int> limit, TaskInstance& instance);

    /// Sets a state, of whatever acceptance; 0 removes the entry.
    void Set(int taskID, short status);
    /// Replaces the entry, or appends one; state 0 removes it.
    void Set(const tagTASK_STATUS& record);
    /// Removes the entry. @return the state that it had, 0 when there was none
    short Remove(int taskID);

    /// Puts the record in when the acceptance still owns the task. @return false when it was stopped
    bool BeginBroadcast(TaskInstance instance, const tagTASK_STATUS& record);
    /// Ends an acceptance: notes its last state unless there is a later one of the ID.
    /// @return the state to tell the host: 0 when there is a later one
    short Conclude(int taskID, TaskInstance instance, short status);
    /// Forgets the thread of an acceptance that is concluded and has told the host.
    void Forget(int taskID, TaskInstance instance);

    bool IsStopped(int taskID, TaskInstance instance) const;
    /// @return whether there is a later acceptance of the ID
    bool IsSuperseded(int taskID, TaskInstance instance) const;
    /// @return whether the acceptance is concluded
    bool IsOver(int taskID, TaskInstance instance) const;
    /// @return the acceptance that owns the ID, 0 when there is none
    TaskInstance Owner(int taskID) const;

    enum class Predecessor { None, TellingTheHost, Working };
    /// @return what the thread of an earlier acceptance still does
    Predecessor FindPredecessor(int taskID, TaskInstance instance) const;

    /// @return whether any task's thread has not been forgotten yet
    bool HasThreads() const;

    /// @return 0 when the ID is unknown
    short Status(int taskID) const;
    std::optional<tagTASK_STATUS> Find(int taskID) const;
    int RunningTasks() const;
    /// Writes the IDs of running tasks, at most maxCount. @return the number of all entries
    int ListRunning(int* ids, int maxCount) const;

private:
    struct Entry {
        tagTASK_STATUS record;
        TaskInstance instance = 0;
    };
    using Entries = std::list<Entry>;
    struct Thread {
        TaskInstance instance;
        bool concluded;
    };

    Entry* FindLocked(int taskID) const K740_REQUIRES(m_lock);
    Entry& AppendLocked(int taskID) K740_REQUIRES(m_lock);
    void EraseLocked(int taskID) K740_REQUIRES(m_lock);
    int RunningLocked() const K740_REQUIRES(m_lock);
    bool IsSupersededLocked(int taskID, TaskInstance instance) const K740_REQUIRES(m_lock);

    mutable CQBSem m_lock;
    Entries m_entries K740_GUARDED_BY(m_lock);
    std::unordered_map<int, Entries::iterator> m_byID K740_GUARDED_BY(m_lock);
    std::multimap<int, Thread> m_threads K740_GUARDED_BY(m_lock); // of acceptances, by task ID
    TaskInstance m_lastInstance K740_GUARDED_BY(m_lock) = 0;
};
