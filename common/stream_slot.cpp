#include "common/stream_slot.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace {
constexpr std::size_t kMoveToFrontBytes = 4096;
constexpr std::size_t kKeptBytes = 65'536; // of whole pages, whatever their size
} // namespace

CStreamSlot::~CStreamSlot() {
    const CQBSemLocker lock(&m_lock);
    FreeLocked();
}

bool CStreamSlot::New(int ownerID, std::size_t capacity) {
    const CQBSemLocker lock(&m_lock);
    FreeLocked();
    void* memory = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) { return false; }
    m_data = static_cast<unsigned char*>(memory);
    m_capacity = capacity;
    m_ownerID = ownerID;
    return true;
}

void CStreamSlot::Remove(int ownerID) {
    const CQBSemLocker lock(&m_lock);
    if (m_ownerID == ownerID) { FreeLocked(); }
}

void CStreamSlot::FreeLocked() {
    if (m_data != nullptr) { munmap(m_data, m_capacity); }
    m_data = nullptr;
    m_capacity = 0;
    m_head = 0;
    m_fill = 0;
    m_touched = 0;
    m_ownerID = 0;
}

bool CStreamSlot::Push(int ownerID, const unsigned char* data, std::size_t length) {
    const CQBSemLocker lock(&m_lock);
    if (m_ownerID != ownerID || length > m_capacity - m_fill) { return false; }
    CopyIn(data, length);
    m_fill += length;
    return true;
}

bool CStreamSlot::Take(int ownerID, unsigned char* out, std::size_t length) {
    const CQBSemLocker lock(&m_lock);
    return TakeLocked(ownerID, out, length);
}

bool CStreamSlot::TakeLocked(int ownerID, unsigned char* out, std::size_t length) {
    if (m_ownerID != ownerID || length > m_fill) { return false; }
    CopyOut(out, length);
    m_head = m_capacity == 0 ? 0 : (m_head + length) % m_capacity;
    m_fill -= length;
    if (m_fill <= kMoveToFrontBytes) { MoveToFront(); }
    return true;
}

void CStreamSlot::CopyIn(const unsigned char* data, std::size_t length) {
    if (length == 0) { return; }
    const std::size_t tail = (m_head + m_fill) % m_capacity;
    const std::size_t untilEnd = std::min(length, m_capacity - tail);
    std::memcpy(m_data + tail, data, untilEnd);
    std::memcpy(m_data, data + untilEnd, length - untilEnd);
    m_touched = std::max(m_touched, untilEnd < length ? m_capacity : tail + length);
}

void CStreamSlot::CopyOut(unsigned char* out, std::size_t length) const {
    if (length == 0) { return; }
    const std::size_t untilEnd = std::min(length, m_capacity - m_head);
    std::memcpy(out, m_data + m_head, untilEnd);
    std::memcpy(out + untilEnd, m_data, length - untilEnd);
}

void CStreamSlot::MoveToFront() {
    std::array<unsigned char, kMoveToFrontBytes> rest;
    CopyOut(rest.data(), m_fill);
    m_head = 0;
    if (m_fill > 0) { std::memcpy(m_data, rest.data(), m_fill); }
    if (m_touched > kKeptBytes) { GiveBackBacklog(); }
}

void CStreamSlot::GiveBackBacklog() {
    madvise(m_data + kKeptBytes, m_touched - kKeptBytes, MADV_DONTNEED);
    m_touched = kKeptBytes;
}

std::size_t CStreamSlot::Fill(int ownerID) const {
    const CQBSemLocker lock(&m_lock);
    return m_ownerID == ownerID ? m_fill : 0;
}
