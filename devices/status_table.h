// The last known status of every device of a kind: what both kinds of status tables do alike.
#pragma once

#include "common/bounded_table.h"
#include "common/sem.h"

#include <time.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

/// A device that has not reported for longer than this is off line, in seconds.
inline constexpr int kOffLineSeconds = 60;
/// The status of a device that is off line.
inline constexpr uint8_t kStatusOffLine = 255;

inline bool IsOverdue(time_t lastUpdate, time_t now) {
    return difftime(now, lastUpdate) >= kOffLineSeconds + 1; // whole seconds count
}

/// At most kTableBound status records, one for each device, and a queue of at most kQueueBound reports that wait to be
/// merged. Receivers only queue; one thread merges. Where a bound is met the oldest goes.
///
/// Record has: int DeviceID(), bool IsOffLine(), void SetOffLine(), time_t LastUpdate(), void Update(const Record&).
/// Any thread may call anything; copies are handed out. isRegistered and change are called with the table's lock held.
template <typename Record, std::size_t kQueueBound, std::size_t kTableBound> class CStatusTable {
public:
    /// Queues a report.
    void Report(const Record& record) { m_pending.Append(record); }

    /// Merges the queued reports of registered devices, in order of arrival.
    template <typename IsRegistered> void Merge(IsRegistered isRegistered) {
        const CQBSemLocker lock(&m_lock); // before the queue is emptied, so that what is put in meanwhile comes later
        for (const Record& report : m_pending.TakeAll()) {
            if (isRegistered(report.DeviceID())) { PutLocked(report); }
        }
    }

    /// Puts a record in directly, whether its device is registered or not. The device's reports that still wait go:
    /// the off-line mark of its registration, merged later, would undo what was put in.
    void Put(const Record& record) {
        const CQBSemLocker lock(&m_lock);
        m_pending.EraseIf(IsOf(record.DeviceID()));
        PutLocked(record);
    }

    /// Calls change(record) with the device's record, if there is one. Reports that wait replace it later.
    template <typename Function> void Change(int id, Function change) {
        const CQBSemLocker lock(&m_lock);
        const auto found = std::find_if(m_records.begin(), m_records.end(), IsOf(id));
        if (found != m_records.end()) { change(*found); }
    }

    /// Marks the devices that are overdue as off line; the time of their last report stays.
    void Age(time_t now) {
        const CQBSemLocker lock(&m_lock);
        for (Record& record : m_records) {
            if (IsOverdue(record.LastUpdate(), now)) { record.SetOffLine(); }
        }
    }

    /// @return whether the device has no record, or one that is overdue and not yet marked
    bool NeedsOffLineMark(int id, time_t now) const {
        const std::optional<Record> record = Find(id);
        return !record || (!record->IsOffLine() && IsOverdue(record->LastUpdate(), now));
    }

    std::optional<Record> Find(int id) const {
        const CQBSemLocker lock(&m_lock);
        const auto found = std::find_if(m_records.begin(), m_records.end(), IsOf(id));
        return found == m_records.end() ? std::nullopt : std::optional<Record>(*found);
    }

    /// @return all records, in the order in which the devices were first heard of
    std::deque<Record> Copy() const {
        const CQBSemLocker lock(&m_lock);
        return m_records;
    }

    /// Forgets a device, its queued reports too.
    void Remove(int id) {
        const CQBSemLocker lock(&m_lock);
        m_pending.EraseIf(IsOf(id));
        std::erase_if(m_records, IsOf(id));
    }

    /// Forgets the devices that are not registered.
    template <typename IsRegistered> void RemoveUnregistered(IsRegistered isRegistered) {
        const CQBSemLocker lock(&m_lock);
        std::erase_if(m_records, [&](const Record& record) { return !isRegistered(record.DeviceID()); });
    }

private:
    static auto IsOf(int id) {
        return [id](const Record& record) { return record.DeviceID() == id; };
    }

    void PutLocked(const Record& record) K740_REQUIRES(m_lock) {
        const auto found = std::find_if(m_records.begin(), m_records.end(), IsOf(record.DeviceID()));
        if (found != m_records.end()) {
            found->Update(record);
            return;
        }
        if (m_records.size() == kTableBound) { m_records.pop_front(); }
        m_records.push_back(record);
    }

    CBoundedTable<Record, kQueueBound> m_pending;
    mutable CQBSem m_lock;
    std::deque<Record> m_records K740_GUARDED_BY(m_lock);
};
