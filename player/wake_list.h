// The threads that have to look up when something is stopped.
#pragma once

#include "common/sem.h"
#include "common/wake_signal.h"

#include <algorithm>
#include <vector>

/// Signals of threads that wait. Any thread may raise them all.
class CWakeList {
public:
    /// Keeps a signal in the list as long as it lives.
    class Entry {
    public:
        explicit Entry(CWakeList& list) : m_list(list) { m_list.Add(&m_signal); }
        ~Entry() { m_list.Remove(&m_signal); }
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

        /// Sleeps until the list is raised, at most ms milliseconds.
        void Wait(unsigned ms) { m_signal.Wait(ms); }

    private:
        CWakeList& m_list;
        CWakeSignal m_signal;
    };

    void RaiseAll() {
        const CQBSemLocker lock(&m_lock);
        std::for_each(m_signals.begin(), m_signals.end(), [](CWakeSignal* signal) { signal->Raise(); });
    }

private:
    void Add(CWakeSignal* signal) {
        const CQBSemLocker lock(&m_lock);
        m_signals.push_back(signal);
    }
    void Remove(CWakeSignal* signal) {
        const CQBSemLocker lock(&m_lock);
        std::erase(m_signals, signal);
    }

    CQBSem m_lock;
    std::vector<CWakeSignal*> m_signals K740_GUARDED_BY(m_lock);
};
