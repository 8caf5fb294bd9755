// A fresh working directory for the length of one test.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace k740::test {

/// Makes a directory, moves the process into it, and on destruction moves back and removes it with all it holds.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string path = (std::filesystem::temp_directory_path() / "k740-test-XXXXXX").string();
        if (::mkdtemp(path.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), "mkdtemp " + path);
        }
        m_path = path;
        std::filesystem::current_path(m_path);
    }
    ~TemporaryDirectory() {
        std::error_code ignored; // a thread of the library may still be writing its log here
        std::filesystem::current_path(m_before, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_before = std::filesystem::current_path();
    std::filesystem::path m_path;
};

} // namespace k740::test
