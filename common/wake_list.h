// The threads that have to look up when something happens to what they work for.
#pragma once

#include "common/sem.h"
#include "common/wake_signal.h"

#include <algorithm>
#include <vector>

/// Signals of threads that wait, each under the ID of what it works for. Any thread may raise those of an ID, or all.
class CWakeList {
public:
    /// Keeps a signal in the list as long as it lives. Several may share an ID.
    class Entry {
    public:
        Entry(CWakeList& list, int ownerID) : m_list(list), m_ownerID(ownerID) { m_list.Add(this); }
        ~Entry() { m_list.Remove(this); }
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

        /// Sleeps until raised, at most ms milliseconds.
        void Wait(unsigned ms) { m_signal.Wait(ms); }

    private:
        friend class CWakeList;

        CWakeList& m_list;
        const int m_ownerID;
        CWakeSignal m_signal;
    };

    void Raise(int ownerID) {
        RaiseIf([=](const Entry& entry) { return entry.m_ownerID == ownerID; });
    }
    void RaiseAll() {
        RaiseIf([](const Entry&) { return true; });
    }

private:
    template <typename Match> void RaiseIf(Match match) {
        const CQBSemLocker lock(&m_lock);
        for (Entry* entry : m_entries) {
            if (match(*entry)) { entry->m_signal.Raise(); }
        }
    }
    void Add(Entry* entry) {
        const CQBSemLocker lock(&m_lock);
        m_entries.push_back(entry);
    }
    void Remove(Entry* entry) {
        const CQBSemLocker lock(&m_lock);
        std::erase(m_entries, entry);
    }

    CQBSem m_lock;
    std::vector<Entry*> m_entries K740_GUARDED_BY(m_lock);
};
