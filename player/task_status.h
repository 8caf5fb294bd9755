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

    /// Removes the entry. @return the state that it had, 0 when there was none
    short Remove(int taskID);

    /// Puts the record in when its acceptance still owns the task. @return false when it was stopped
    bool BeginBroadcast(const tagTASK_STATUS& record);
    /// Marks an acceptance as over: the requests that close its audio follow, and none that plays it may come after.
    void BeginClosing(int taskID, TaskInstance instance);
    /// Ends an acceptance: notes its last state unless there is a later one of the ID.
    /// @return the state to tell the host: 0 when there is a later one
    short Conclude(int taskID, TaskInstance instance, short status);
    /// Forgets the thread of an acceptance that is concluded and has told the host.
    void Forget(int taskID, TaskInstance instance);

    /// @return whether the acceptance's task has a state below 1 or does not own the ID any more
    bool IsTaskStoped(int taskID, TaskInstance instance) const;
    /// @return whether there is a later acceptance of the ID
    bool IsSuperseded(int taskID, TaskInstance instance) const;
    /// @return whether the acceptance is closing or concluded
    bool IsOver(int taskID, TaskInstance instance) const;

    enum class Predecessor { None, TellingTheHost, Working };
    /// @return what the thread of an earlier acceptance still does
    Predecessor FindPredecessor(int taskID, TaskInstance instance) const;

    /// @return whether any task's thread has not been forgotten yet
    bool HasThreads() const;

    /// @return 0 when the ID is unknown
    short GetTaskStatus(int taskID) const;
    /// @return 0; -1 with an empty record when the ID is unknown
    int GetTaskStatus(int taskID, tagTASK_STATUS& out) const;
    /// Writes the IDs of running tasks, at most maxCount. @return the number of all entries
    int ListRunning(int* ids, int maxCount) const;

private:
    using Entries = std::list<tagTASK_STATUS>;
    enum class Phase { Playing, Closing, Concluded };
    struct Thread {
        TaskInstance instance;
        Phase phase = Phase::Playing;
    };
    using Threads = std::multimap<int, Thread>; // of acceptances, by task ID

    tagTASK_STATUS* FindLocked(int taskID) const K740_REQUIRES(m_lock);
    tagTASK_STATUS& AppendLocked(int taskID) K740_REQUIRES(m_lock);
    /// Notes a state and whose it is; 0 removes the entry.
    void SetTaskStatus(int taskID, short status, TaskInstance instance) K740_REQUIRES(m_lock);
    void EnterPhase(int taskID, TaskInstance instance, Phase phase) K740_REQUIRES(m_lock);
    int GetRunningTaskCounter() const K740_REQUIRES(m_lock);
    bool IsSupersededLocked(int taskID, TaskInstance instance) const K740_REQUIRES(m_lock);

    mutable CQBSem m_lock;
    Entries m_entries K740_GUARDED_BY(m_lock);
    std::unordered_map<int, Entries::iterator> m_byID K740_GUARDED_BY(m_lock);
    Threads m_threads K740_GUARDED_BY(m_lock);
    TaskInstance m_lastInstance K740_GUARDED_BY(m_lock) = 0;
};
