// A file that is read in blocks and begins anew at its end.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

/// Belongs to one thread. Files are never closed: the sample plays them until its process ends.
class LoopedFile {
public:
    explicit LoopedFile(const std::string& path);

    bool IsOpen() const { return m_file != nullptr; }
    /// Reads the next block. At the end of the file nothing is read, the block stays as it was, and the file is opened
    /// again for the next one.
    void Read(unsigned char* block, std::size_t bytes);

private:
    const std::string m_path;
    std::FILE* m_file;
};
