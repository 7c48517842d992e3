#include "CommandLine/DemoCrash.h"

#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"
#include "Tallyfoot/Platform/Posix/PosixUserDefaults.h"

namespace tallyfoot::commandline {

namespace {

std::string text(const PropertyList::Dictionary& record, const std::string& key) {
    const auto found = record.find(key);
    const auto* value = found == record.end() ? nullptr : found->second.as<std::string>();
    return value == nullptr ? std::string() : *value;
}

} // namespace

std::optional<DemoCrash> DemoCrash::waiting(const std::filesystem::path& configuration) {
    std::error_code none;
    for (const auto& bundle : std::filesystem::directory_iterator(configuration / "Tallyfoot", none)) {
        const PosixUserDefaults defaults(bundle.path().string(), std::make_shared<PosixPropertyLists>());
        const auto value = defaults.object("crash");
        const auto* record = value ? value->as<PropertyList::Dictionary>() : nullptr;
        if (record != nullptr) return DemoCrash{text(*record, "evtId"), text(*record, "crashreason")};
    }
    return std::nullopt;
}

} // namespace tallyfoot::commandline
