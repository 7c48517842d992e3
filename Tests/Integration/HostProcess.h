#pragma once

#include "CommandLine/ChildProcess.h"
#include "Support/CollectorProcess.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// The folders of one device: what a host leaves there, the next one finds.
struct Device {
    explicit Device(std::filesystem::path folder) : root(std::move(folder)) {}

    std::map<std::string, std::string> environment() const;
    std::filesystem::path library() const { return root / "data/Tallyfoot"; }
    std::multiset<std::string> storedEvents() const; // the "evtId" of every record in a log or an archive

    std::filesystem::path root;
};

// A LoggingHost in a process of its own, and the events that it has acknowledged.
class HostProcess {
public:
    HostProcess(const Device& device, const std::string& url, const std::string& application, const std::string& run);

    void tell(const std::string& command) { process_.writeLine(command); }
    void awaitAcknowledgements(std::size_t count); // of further events; fails the test if they do not come
    void kill();                                   // at once; what it had acknowledged counts
    // This signal, at whatever it is doing now, to one of its threads. Its exit status; nothing if it hangs.
    std::optional<int> crash(int signal, std::mt19937& random);
    void quit();
    const std::set<std::string>& acknowledged() const { return acknowledged_; }

private:
    std::optional<std::string> nextAcknowledgement();
    void readToEnd();

    commandline::ChildProcess process_;
    std::set<std::string> acknowledged_;
};

// Has the host switch its application and log a few events more until the collector has confirmed all
// that are in the set, and tells which are missing when its patience ends.
std::set<std::string> deliver(HostProcess& host, CollectorProcess& collector, std::set<std::string> awaited);

} // namespace tallyfoot::testing
