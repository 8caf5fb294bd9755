#include "sim/private_network.h"

#include "sim/ip_batch.h"
#include "sim/system_error.h"

#include <fcntl.h>
#include <sched.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace k740::sim {
namespace {

// The same at both ends: with ARP off a packet carries its sender's own hardware address as the destination.
constexpr const char* kHardwareAddress = "02:4b:37:34:30:01";

void RunOnThread(const std::function<void()>& work) {
    std::exception_ptr thrown;
    std::thread thread([&] {
        try {
            work();
        } catch (...) { thrown = std::current_exception(); }
    });
    thread.join();
    if (thrown) { std::rethrow_exception(thrown); }
}

void EnterNewNamespace() {
    if (::unshare(CLONE_NEWNET) == 0) { return; }
    throw std::runtime_error("This machine refuses private network namespaces (unshare: " +
                             std::generic_category().message(errno) + "); run as root or allow user namespaces.");
}

FileDescriptor CurrentNamespace() {
    return FileDescriptor(Checked(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC), "open ns/net"));
}

std::string AddAddresses(const std::vector<std::string>& addresses, const std::string& device) {
    std::string commands;
    const std::string suffix = "/16 dev " + device + "\n";
    for (const std::string& address : addresses) {
        commands += "address add ";
        commands += address;
        commands += suffix;
    }
    return commands;
}

std::string BringUp(const std::string& device, const std::vector<std::string>& addresses) {
    std::string commands = "link set lo up\nlink set " + device + " arp off up\n";
    if (std::filesystem::exists("/proc/sys/net/ipv6")) {
        commands = "link set " + device + " addrgenmode none\n" + commands; // no chatter of IPv6
    }
    commands += AddAddresses(addresses, device);
    return commands += "route add 224.0.0.0/4 dev " + device + "\n";
}

/// Lets a device that was up before its cable's other end send at once. Of itself it drops what it is given until the
/// system has noticed the new carrier in the background; a change of the queue's length (from 1000) opens it now.
std::string OpenQueue(const std::string& device) {
    return "link set " + device + " txqueuelen 1001\n";
}

std::string LayCable() {
    const std::string address = std::string(" address ") + kHardwareAddress;
    std::string command = "link add station" + address;
    command += " type veth peer name field" + address;
    return command += std::string(" netns ") + kIpBatchNamespace + "\n";
}

} // namespace

PrivateNetwork::PrivateNetwork(const Options& options) {
    RunOnThread([this] {
        EnterNewNamespace();
        m_field = CurrentNamespace();
    });
    EnterNewNamespace();
    std::vector<std::string> stationAddresses{kStationAddress};
    stationAddresses.insert(stationAddresses.end(), options.extraStationAddresses.begin(),
                            options.extraStationAddresses.end());
    RunIpBatch(LayCable() + BringUp("station", stationAddresses), m_field.Get());
    RunInField([&] { RunIpBatch(BringUp("field", options.fieldAddresses)); });
    RunIpBatch(OpenQueue("station"));
    m_stamps.emplace();
}

void PrivateNetwork::AddFieldAddresses(const std::vector<std::string>& addresses) const {
    RunInField([&] { RunIpBatch(AddAddresses(addresses, "field")); });
}

void PrivateNetwork::RunInField(const std::function<void()>& work) const {
    RunOnThread([&] {
        Checked(::setns(m_field.Get(), CLONE_NEWNET), "setns");
        work();
    });
}

} // namespace k740::sim
