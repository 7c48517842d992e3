#include "CommandLine/DemoDisk.h"

#include "CommandLine/RecordWalk.h"

#include <nlohmann/json.hpp>

namespace tallyfoot::commandline {

namespace {

namespace fs = std::filesystem;

std::string text(const nlohmann::json& record, const char* name) {
    return record.is_object() ? record.value(name, std::string()) : std::string();
}

class DiskReading {
public:
    DiskReading(const fs::path& folder, const std::function<std::int64_t(std::string_view)>& number)
        : folder_(folder), number_(number) {}

    DemoDisk take() {
        std::error_code failure;
        for (fs::recursive_directory_iterator entry(folder_, failure), end; !failure && entry != end;
             entry.increment(failure)) {
            const auto extension = entry->path().extension();
            std::error_code gone;
            if (extension == ".log" || extension == ".zip") readFile(entry->path(), entry->file_size(gone));
        }
        return std::move(disk_);
    }

private:
    void readFile(const fs::path& path, std::uintmax_t bytes) {
        DemoDisk::File file{path.lexically_relative(folder_).string(), 0, bytes};
        RecordVisitor visitor;
        visitor.record = [&](const std::string&, std::string_view record) {
            ++file.records;
            const auto parsed = nlohmann::json::parse(record, nullptr, false);
            ++disk_.events[number_(text(parsed, "evtId"))];
        };
        visitor.fragment = [&](const std::string& log, const collector::LogPiece& piece) {
            disk_.complaints.push_back(log + ": " + std::to_string(piece.text.size()) + " bytes are no whole record");
        };
        visitor.unreadable = [&](const std::string& name, const std::string& reason) {
            disk_.complaints.push_back(name + ": " + reason);
        };
        walkRecords(path, visitor);
        const auto stage = path.parent_path().filename();
        (stage == "Events" ? disk_.open : stage == "Upload" ? disk_.closed : disk_.packed) += file.records;
        disk_.hasArchives = disk_.hasArchives || path.extension() == ".zip";
        disk_.files.push_back(std::move(file));
    }

    const fs::path& folder_;
    const std::function<std::int64_t(std::string_view)>& number_;
    DemoDisk disk_;
};

} // namespace

DemoDisk DemoDisk::read(const fs::path& folder, const std::function<std::int64_t(std::string_view)>& number) {
    return DiskReading(folder, number).take();
}

} // namespace tallyfoot::commandline
