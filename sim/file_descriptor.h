// A file descriptor that has exactly one owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace k740::sim {

/// Owns one descriptor and closes it once. Movable, not copyable; -1 owns nothing.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) : m_fd(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~FileDescriptor() {
        if (m_fd >= 0) { ::close(m_fd); }
    }

    [[nodiscard]] int Get() const { return m_fd; }
    [[nodiscard]] bool IsOpen() const { return m_fd >= 0; }

private:
    int m_fd = -1;
};

} // namespace k740::sim
