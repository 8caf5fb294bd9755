// What the task-status callback was told, and what a test does within it.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace k740::test {

/// Keeps the reports of PTASKSTATUS. Any thread may call anything.
class TaskReports {
public:
    using Action = std::function<void()>;

    /// Runs the action within the next report of this state, on the library's thread.
    void OnNext(int taskID, int status, Action action) {
        const std::lock_guard lock(m_lock);
        m_actions[{taskID, status}] = std::move(action);
    }

    void Note(int taskID, int status) {
        Action action;
        {
            const std::lock_guard lock(m_lock);
            m_reports[taskID].push_back(status);
            std::swap(action, m_actions[{taskID, status}]);
        }
        m_noted.notify_all();
        if (action) { action(); }
    }

    /// Waits until a task has reported a state that many times.
    bool WaitFor(int taskID, int status, std::ptrdiff_t count = 1,
                 std::chrono::milliseconds timeout = std::chrono::seconds(8)) {
        std::unique_lock lock(m_lock);
        return m_noted.wait_for(lock, timeout, [&] {
            const std::vector<int>& states = m_reports[taskID];
            return std::count(states.begin(), states.end(), status) >= count;
        });
    }

    /// @return how often a task has reported a state
    std::ptrdiff_t Count(int taskID, int status) {
        const std::vector<int> states = Of(taskID);
        return std::count(states.begin(), states.end(), status);
    }

    /// The states of a task so far, in order.
    std::vector<int> Of(int taskID) {
        const std::lock_guard lock(m_lock);
        return m_reports[taskID];
    }

private:
    std::mutex m_lock;
    std::condition_variable m_noted;
    std::map<int, std::vector<int>> m_reports;       // guarded by m_lock
    std::map<std::pair<int, int>, Action> m_actions; // guarded by m_lock
};

/// The reports of this process. Never destroyed, because threads of the library may outlive main.
inline TaskReports& Reports() {
    static auto* const reports = new TaskReports;
    return *reports;
}

/// The callback to register.
inline int NoteTaskReport(int taskID, int status) {
    Reports().Note(taskID, status);
    return 0;
}

} // namespace k740::test
