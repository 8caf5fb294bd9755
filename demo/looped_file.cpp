#include "demo/looped_file.h"

LoopedFile::LoopedFile(const std::string& path) : m_path(path), m_file(std::fopen(path.c_str(), "rb")) {}

void LoopedFile::Read(unsigned char* block, std::size_t bytes) {
    if (std::fread(block, 1, bytes, m_file) > 0) { return; }
    std::FILE* again = std::fopen(m_path.c_str(), "rb");
    if (again != nullptr) {
        m_file = again;
    } else {
        std::rewind(m_file); // out of descriptors, or the file has gone
    }
}
