// A container with a fixed bound, behind its own lock.
#pragma once

#include "common/sem.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <iterator>
#include <optional>
#include <utility>

/// What becomes of a record that arrives when the table is full.
enum class WhenFull { EraseOldest, RefuseNew };

/// At most kBound records in order of arrival. Hands out copies, never references; any thread may call anything.
template <typename Record, std::size_t kBound, WhenFull kPolicy = WhenFull::EraseOldest> class CBoundedTable {
public:
    using value_type = Record;

    /// @return false only under RefuseNew, when kBound records are held already
    bool Append(Record record) {
        const CQBSemLocker lock(&m_lock);
        return AppendLocked(std::move(record));
    }

    /// Takes everything in one step, so that producers never wait for the consumer's work.
    std::deque<Record> TakeAll() {
        const CQBSemLocker lock(&m_lock);
        return std::exchange(m_records, {});
    }

    /// @return a copy of all records, oldest first
    std::deque<Record> Copy() const {
        const CQBSemLocker lock(&m_lock);
        return m_records;
    }

    /// Removes the oldest record and hands it out.
    std::optional<Record> TakeOldest() {
        const CQBSemLocker lock(&m_lock);
        return TakeLocked(m_records.begin());
    }

    /// Removes the newest record that matches and hands it out.
    template <typename Match> std::optional<Record> TakeNewest(Match match) {
        const CQBSemLocker lock(&m_lock);
        const auto newest = std::find_if(m_records.rbegin(), m_records.rend(), match);
        return TakeLocked(newest == m_records.rend() ? m_records.end() : std::next(newest).base());
    }

    /// Removes the oldest record that matches and hands it out.
    template <typename Match> std::optional<Record> TakeFirst(Match match) {
        const CQBSemLocker lock(&m_lock);
        return TakeLocked(std::find_if(m_records.begin(), m_records.end(), match));
    }

    /// @return a copy of the first record that matches
    template <typename Match> std::optional<Record> Find(Match match) const {
        const CQBSemLocker lock(&m_lock);
        const auto found = std::find_if(m_records.begin(), m_records.end(), match);
        return found == m_records.end() ? std::nullopt : std::optional<Record>(*found);
    }

    /// Changes the first record that matches, or appends one.
    /// @return whether it was appended
    template <typename Match, typename Update> bool UpdateOrAppend(Match match, Update update, Record fresh) {
        const CQBSemLocker lock(&m_lock);
        const auto found = std::find_if(m_records.begin(), m_records.end(), match);
        if (found != m_records.end()) {
            update(*found);
            return false;
        }
        return AppendLocked(std::move(fresh));
    }

    /// Erases every record that matches. @return how many
    template <typename Match> std::size_t EraseIf(Match match) {
        const CQBSemLocker lock(&m_lock);
        return std::erase_if(m_records, match);
    }

    std::size_t Size() const {
        const CQBSemLocker lock(&m_lock);
        return m_records.size();
    }

private:
    /// Removes the record at a place and hands it out; nothing for the end.
    std::optional<Record> TakeLocked(typename std::deque<Record>::iterator place) K740_REQUIRES(m_lock) {
        if (place == m_records.end()) { return std::nullopt; }
        std::optional<Record> taken(std::move(*place));
        m_records.erase(place);
        return taken;
    }

    bool AppendLocked(Record record) K740_REQUIRES(m_lock) {
        if (m_records.size() == kBound) {
            if constexpr (kPolicy == WhenFull::RefuseNew) { return false; }
            m_records.pop_front();
        }
        m_records.push_back(std::move(record));
        return true;
    }

    mutable CQBSem m_lock;
    std::deque<Record> m_records K740_GUARDED_BY(m_lock);
};
