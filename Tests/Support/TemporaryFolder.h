#pragma once

#include <filesystem>
#include <string>

namespace tallyfoot::testing {

// A folder of the test's own, gone with everything in it when the test ends.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

std::string readFile(const std::filesystem::path& path);                   // fails the test if it cannot be read
void writeFile(const std::filesystem::path& path, std::string_view bytes); // with its parents

} // namespace tallyfoot::testing
