#include "sim/ip_batch.h"

#include "sim/file_descriptor.h"
#include "sim/system_error.h"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace k740::sim {
namespace {

constexpr int kNamespaceNumber = 3; // as in kIpBatchNamespace

/// Anonymous files instead of pipes: neither side can block, and a child that ends early raises no SIGPIPE.
FileDescriptor AnonymousFile(const std::string& content) {
    FileDescriptor file(Checked(::memfd_create("ip-batch", MFD_CLOEXEC), "memfd_create"));
    Checked(::pwrite(file.Get(), content.data(), content.size(), 0), "pwrite");
    return file;
}

std::string ReadAll(const FileDescriptor& file) {
    std::array<char, 2048> text{};
    const ssize_t size = ::pread(file.Get(), text.data(), text.size(), 0);
    return {text.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

/// The descriptors of the child, each a copy that survives exec.
class ChildFiles {
public:
    ChildFiles() { ::posix_spawn_file_actions_init(&m_actions); }
    ~ChildFiles() { ::posix_spawn_file_actions_destroy(&m_actions); }
    ChildFiles(const ChildFiles&) = delete;
    ChildFiles& operator=(const ChildFiles&) = delete;

    void Give(int file, int number) { ::posix_spawn_file_actions_adddup2(&m_actions, file, number); }
    [[nodiscard]] const posix_spawn_file_actions_t* Get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions{};
};

int RunIp(const ChildFiles& files) {
    std::array<std::string, 3> words{"ip", "-batch", "-"};
    const std::array<char*, 4> arguments{words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t child = 0;
    const int error = ::posix_spawnp(&child, arguments[0], files.Get(), nullptr, arguments.data(), environ);
    if (error != 0) { throw std::system_error(error, std::generic_category(), "ip of package iproute2"); }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    return status;
}

} // namespace

void RunIpBatch(const std::string& commands, int namespaceFile) {
    const FileDescriptor input = AnonymousFile(commands);
    const FileDescriptor output = AnonymousFile("");
    ChildFiles files;
    files.Give(input.Get(), STDIN_FILENO);
    files.Give(output.Get(), STDOUT_FILENO);
    files.Give(output.Get(), STDERR_FILENO);
    if (namespaceFile >= 0) { files.Give(namespaceFile, kNamespaceNumber); } // last: its number may be another's source
    if (RunIp(files) != 0) { throw std::runtime_error("The private network cannot be laid out: " + ReadAll(output)); }
}

} // namespace k740::sim
