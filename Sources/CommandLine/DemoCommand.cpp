#include "CommandLine/DemoCommand.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <iomanip>
#include <iostream>

namespace tallyfoot::commandline {

namespace {

namespace fs = std::filesystem;

constexpr const char* shopName = "tallyfoot-shop";

DemoOptions quickOptions() {
    DemoOptions options;
    options.events = 400;
    options.eventsCount = 20;
    options.pauseMicroseconds = 0;
    return options;
}

fs::path madeFolder() {
    std::string name = (fs::temp_directory_path() / "tallyfoot-demo-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make the folder " + name);
    return name;
}

void row(const std::string& name, std::int64_t count, const std::string& remark = {}) {
    std::cout << "  " << std::left << std::setw(26) << name << std::right << std::setw(7) << count
              << (remark.empty() ? "" : "   ") << remark << '\n';
}

void list(const std::string& title, const std::vector<std::string>& lines) {
    if (lines.empty()) return;
    std::cout << '\n' << title << '\n';
    for (const auto& line : lines) std::cout << "  " << line << '\n';
}

void printTable(const DemoAccount& account) {
    std::cout << '\n';
    row("confirmed by the server", account.confirmed());
    row("still on disk", account.onDisk());
    row("discarded by rule", account.discarded(), "the former user's, when the user changed");
    std::cout << "  " << std::string(33, '-') << '\n';
    row("together", account.confirmed() + account.onDisk() + account.discarded());
    row("logged", account.logged(), account.isBalanced() ? "the same" : "NOT THE SAME");
}

void printCrash(const DemoCrash& crash, std::int64_t told) {
    std::cout << '\n';
    row("crashes on purpose", 1, "\"" + crash.reason + "\"");
    row("told by the next start", told, told == 1 ? "once" : "NOT ONCE");
}

void printKind(const std::string& kind, const std::vector<std::string>& cells, const std::string& remark = {}) {
    std::cout << "  " << std::left << std::setw(36) << kind << std::right;
    for (const auto& cell : cells) std::cout << std::setw(11) << cell;
    std::cout << (remark.empty() ? "" : "   ") << remark << '\n';
}

std::vector<std::string> cells(const DemoKinds::Row& row) {
    std::vector<std::string> cells;
    for (const auto count : {row.performed, row.due, row.recorded, row.confirmed, row.onDisk, row.discarded})
        cells.push_back(std::to_string(count));
    return cells;
}

void printKinds(const DemoKinds& kinds, double seconds) {
    std::cout << "\nWhat the user did in " << static_cast<int>(seconds / 60) << " minutes of the app's time, "
              << "and the records of it\n";
    printKind("", {"performed", "due", "recorded", "confirmed", "on disk", "discarded"});
    for (const auto& row : kinds.rows()) printKind(row.kind, cells(row), row.isBalanced() ? "" : "NOT THE SAME");
}

std::vector<std::string> fileLines(const DemoDisk& disk) {
    std::vector<std::string> lines;
    for (const auto& file : disk.files) {
        lines.push_back(file.path + ": " + std::to_string(file.records) + " records, " + std::to_string(file.bytes)
                        + " bytes");
    }
    return lines;
}

} // namespace

DemoCommand::DemoCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("demo", "Play a session against a local collector and settle the accounts");
    auto* quick = command->add_flag("--quick", isQuick_, "Some hundreds of events without pauses");
    command->add_option("--events", options_.events, "About how many events to log")
        ->check(CLI::Range(1500, 1000000)) // with fewer, a step would bring about no upload
        ->excludes(quick)
        ->capture_default_str();
    auto* plain = command->add_flag("--plain", isPlain_, "A host that logs itself, from several threads, for the shop");
    command->add_option("--seed", options_.seed, "What the user's walk through the shop is drawn from")
        ->excludes(plain)
        ->capture_default_str();
    command->add_option("--threads", options_.threads, "Threads that log")
        ->needs(plain)
        ->check(CLI::Range(1, 64))
        ->capture_default_str();
    command->add_flag("--keep", keepsFolder_, "Keep the folder with everything that host and collector wrote");
    command->footer("Everything stays on this machine. The exit status is 1 when one event is unaccounted for.");
    command->callback([this, &status] { status = run(); });
}

int DemoCommand::run() const {
    const auto tool = fs::read_symlink("/proc/self/exe");
    const auto options = chosenOptions(tool);
    const auto folder = madeFolder();
    int status = 1;
    {
        DemoProgress progress;
        DemoSession session(options, tool.string(), folder, progress);
        bool wasPlayed = true;
        try {
            session.play();
        } catch (const std::exception& failure) {
            progress.endStep();
            std::cerr << "tallyfoot: " << failure.what() << '\n';
            wasPlayed = false;
        }
        status = settle(session, wasPlayed);
    }
    if (keepsFolder_ || status != 0) {
        std::cout << "\nEverything is in " << folder.string() << '\n';
    } else {
        fs::remove_all(folder);
    }
    return status;
}

DemoOptions DemoCommand::chosenOptions(const fs::path& tool) const {
    auto options = isQuick_ ? quickOptions() : options_;
    options.threads = options_.threads;
    options.seed = options_.seed;
    const auto shop = tool.parent_path() / shopName;
    if (!isPlain_ && fs::exists(shop)) {
        options.shop = shop.string();
    } else if (!isPlain_) {
        std::cout << "There is no " << shopName << " beside this program, so a plain host plays its part.\n";
    }
    return options;
}

int DemoCommand::settle(DemoSession& session, bool wasPlayed) const {
    const auto account = session.account();
    const auto kinds = session.kinds();
    if (kinds) printKinds(*kinds, session.secondsWalked());
    printTable(account);
    if (session.crash()) printCrash(*session.crash(), account.crashesTold());
    list("Came twice", account.duplicates());
    list("Files left", fileLines(session.disk()));
    auto errors = account.errors();
    if (kinds) errors.insert(errors.end(), kinds->errors().begin(), kinds->errors().end());
    list("Errors", errors);
    std::cout << std::flush;
    return wasPlayed && account.isBalanced() && errors.empty() ? 0 : 1;
}

} // namespace tallyfoot::commandline
