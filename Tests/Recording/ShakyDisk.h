#pragma once

#include "Storage/RelayFileManager.h"

#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot::testing {

// A disk that fails for as long as the test says so.
class ShakyDisk final : public RelayFileManager {
public:
    ShakyDisk();

    Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override;
    Result<void> moveItem(const std::string& source, const std::string& destination) override;
    Result<void> removeItem(const std::string& path) override;
    Result<std::string> contents(const std::string& path) const override;
    Result<void> writeAtomically(const std::string& path, std::string_view bytes) override;

    bool cannotList = false;
    bool cannotChange = false;
    bool hasNoMemory = false;
};

} // namespace tallyfoot::testing
