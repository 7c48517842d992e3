#include "CommandLine/CollectCommand.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <csignal>
#include <iostream>

namespace tallyfoot::commandline {

namespace {

// Blocked before the server's threads start, so that they inherit it and only `wait` sees them.
class StopSignals {
public:
    StopSignals() {
        sigemptyset(&signals_);
        sigaddset(&signals_, SIGINT);
        sigaddset(&signals_, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    }

    void wait() const {
        int received = 0;
        sigwait(&signals_, &received);
    }

private:
    sigset_t signals_{};
};

std::string listeningLine(const std::string& host, int port) {
    const bool isIPv6 = host.find(':') != std::string::npos;
    const auto authority = (isIPv6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
    return nlohmann::ordered_json{{"port", port}, {"url", "http://" + authority + "/upload"}}.dump();
}

} // namespace

CollectCommand::CollectCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("collect", "Run a local collector that takes uploads");
    command->add_option("--host", options_.host, "Address to listen on")->capture_default_str();
    command->add_option("--port", options_.port, "Port to listen on; 0 picks a free one")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    command->add_option("--database", options_.database, "SQLite file to keep everything in; in memory if not given");
    command
        ->add_option("--fault", faults_,
                     "What to do with the next upload that has no fault yet; may be given several times: accept, "
                     "refuse, refuse:N (every N-th file), status:CODE, http:STATUS, delay:MILLISECONDS, garbage, "
                     "answer:TEXT, reset:BYTES, dropReply, or the fault as JSON")
        ->allow_extra_args(false);
    randomFaults_ = command->add_option(
        "--random-faults", seed_, "Once no fault is left, decide by chance, from this seed, what happens to an upload");
    command->callback([this, &status] { status = run(); });
}

int CollectCommand::run() {
    for (const auto& fault : faults_) {
        const auto parsed = collector::Fault::parseOption(fault);
        if (!parsed) {
            std::cerr << "tallyfoot: --fault " << fault << ": " << parsed.error().description << '\n';
            return 2;
        }
        options_.faults.insert(options_.faults.end(), parsed.value().begin(), parsed.value().end());
    }
    if (randomFaults_->count() > 0) options_.randomFaults = seed_;
    const StopSignals signals;
    collector::CollectorServer server(options_);
    const auto port = server.start();
    if (!port) {
        std::cerr << "tallyfoot: " << port.error().description << '\n';
        return 1;
    }
    std::cout << listeningLine(options_.host, port.value()) << std::endl;
    signals.wait();
    server.stop();
    return 0;
}

} // namespace tallyfoot::commandline
