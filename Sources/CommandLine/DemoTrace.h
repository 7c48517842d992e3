#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot::commandline {

// What tells one kind of record from another.
struct DemoFacts {
    std::string type;
    std::string category;
    std::string action;
    std::string label;

    static DemoFacts of(const nlohmann::json& record);
    bool operator==(const DemoFacts&) const = default;
};

// The events that the library showed on its console, in their order: number 1 is the first.
class DemoTrace {
public:
    static DemoTrace read(const std::filesystem::path& consoleOutput);

    std::int64_t size() const { return static_cast<std::int64_t>(facts_.size()); }
    std::int64_t number(std::string_view identifier) const; // 0 for one that was not shown
    const DemoFacts& facts(std::int64_t number) const { return facts_.at(static_cast<std::size_t>(number - 1)); }

private:
    void add(const std::map<std::string, std::string>& attributes);

    std::vector<DemoFacts> facts_;
    std::map<std::string, std::int64_t, std::less<>> numbers_; // by evtId
};

} // namespace tallyfoot::commandline
