#include "CommandLine/CatCommand.h"

#include "Collector/JSONText.h"
#include "CommandLine/LineOutput.h"
#include "CommandLine/RecordWalk.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

namespace tallyfoot::commandline {

namespace {

using collector::LogPiece;

// An archive may name its entries as it likes, but not speak to the terminal.
void complain(std::string subject, const std::string& complaint) {
    std::replace_if(
        subject.begin(), subject.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; }, '?');
    std::cerr << "tallyfoot: " << subject << ": " << complaint << '\n';
}

std::string position(const LogPiece& piece) {
    return std::to_string(piece.text.size()) + " bytes at offset " + std::to_string(piece.offset);
}

} // namespace

CatCommand::CatCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("cat", "Print stored records as one line of JSON each");
    command->add_option("path", paths_, "Log files (.log), archives of them (.zip), or folders of both")->required();
    command->footer("Every record is printed letter for letter, without the white space between its tokens.\n"
                    "An unfinished record at a log's end, as a killed process leaves it, is reported on standard\n"
                    "error and is no failure. What cannot be read, or is no record, is reported too, the rest is\n"
                    "printed, and the exit status is 1.");
    command->callback([this, &status] { status = run(); });
}

int CatCommand::run() const {
    LineOutput output;
    bool failed = false;
    RecordVisitor visitor;
    visitor.record = [&](const std::string&, std::string_view record) { output.line(collector::compacted(record)); };
    visitor.fragment = [&](const std::string& log, const LogPiece& piece) {
        const bool torn = piece.kind == LogPiece::Kind::tornTail;
        complain(log, torn ? "ends in an unfinished record: " + position(piece) : "no record: " + position(piece));
        failed = failed || !torn;
    };
    visitor.unreadable = [&](const std::string& path, const std::string& reason) {
        complain(path, reason);
        failed = true;
    };
    for (const auto& path : paths_) {
        if (output.isOpen()) walkRecords(path, visitor);
    }
    output.flush();
    if (!output.isOpen() && !output.readerLeft()) {
        complain("standard output", output.failure());
        return 1;
    }
    return failed ? 1 : 0;
}

} // namespace tallyfoot::commandline
