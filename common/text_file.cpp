#include "common/text_file.h"

#include "common/immortal.h"
#include "common/sem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

constinit CImmortal<CQBSem> g_fileLock; // the log's writer may outlive main

// One open and plain writes: a buffered stream would be torn by a host that exits in the middle.
void WriteAll(int file, const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(file, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) { continue; }
        if (count <= 0) { return; }
        written += static_cast<std::size_t>(count);
    }
}

} // namespace

int WriteLog(const std::string& path, const std::string& text) {
    const CQBSemLocker lock(&*g_fileLock);
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (file < 0) { return 0; }
    WriteAll(file, text);
    struct stat status {};
    const bool tooLarge = fstat(file, &status) == 0 && status.st_size > kLogFileLimit;
    close(file);
    if (tooLarge) { unlink(path.c_str()); }
    return tooLarge ? 1 : 0;
}
