// Tells a call that the host makes within a report of a task from all others.
#pragma once

/// Marks, as long as it lives, that its thread tells the host of a task that goes on. Such a task cannot end before the
/// host's callback has returned.
class CRunningReport {
public:
    explicit CRunningReport(int taskID) : m_taskID(taskID), m_outer(t_innermost) { t_innermost = this; }
    ~CRunningReport() { t_innermost = m_outer; }
    CRunningReport(const CRunningReport&) = delete;
    CRunningReport& operator=(const CRunningReport&) = delete;

    /// @return whether the calling thread is within such a report of the task
    static bool IsUnderWay(int taskID) {
        const CRunningReport* report = t_innermost;
        while (report != nullptr && report->m_taskID != taskID) { report = report->m_outer; }
        return report != nullptr;
    }

private:
    static inline thread_local const CRunningReport* t_innermost = nullptr;

    const int m_taskID;
    const CRunningReport* const m_outer; // reports may come within reports
};
