#pragma once

#include "Support/ManualClock.h"
#include "Support/RecordingConsole.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Storage/FileHandler.h"

#include <gmock/gmock.h>

namespace tallyfoot::testing {

using Folder = AppFolder::Folder;

// Real folders of an application "Shop" below a temporary application-support directory, a clock
// that stands still at 2024-03-07 14:05:09.123 in UTC, and a console that remembers.
class StorageFixture : public ::testing::Test {
protected:
    StorageFixture();
    ~StorageFixture() override;

    DebugConsole debugConsole() { return {console, settings.showOutput}; }
    std::shared_ptr<AppFolder> makeAppFolder(const std::string& appName = "Shop");
    std::unique_ptr<FileHandler> makeFileHandler(bool isCurrentApplication = true,
                                                 const std::function<bool(std::string_view)>& isInFlight = {});
    // On a disk that answers differently.
    std::unique_ptr<FileHandler> makeFileHandler(FileManager& disk, bool isCurrentApplication = true);

    std::string path(Folder folder, const std::string& name = {}) const;
    void put(Folder folder, const std::string& name, std::string_view bytes) { writeFile(path(folder, name), bytes); }
    // Without a byte on the disk.
    void putSparse(Folder folder, const std::string& name, std::uint64_t size);
    std::string bytes(Folder folder, const std::string& name) const { return readFile(path(folder, name)); }
    std::vector<std::string> names(Folder folder) const; // hidden ones too, sorted
    std::string putArchive(const std::string& name, const std::vector<std::pair<std::string, std::string>>& entries);

    static constexpr auto firstName = "07-03-2024T14-05-09-123.log"; // made at the moment at which the clock stands
    static constexpr auto directly = [](FunctionRef<void()> block) { block(); };

    TemporaryFolder support;
    PosixFileManager fileManager;
    ManualClock clock;
    RecordingConsole console;
    Settings settings;
    std::shared_ptr<UploadConfiguration> configuration = std::make_shared<UploadConfiguration>(60, 20);
};

// As the other side made it: any names, stored or deflated.
void writeArchive(const std::string& path, const std::vector<std::pair<std::string, std::string>>& entries,
                  bool isDeflated = false);
// The bytes of a file changed in place, wherever they occur.
void replaceInFile(const std::string& path, std::string_view from, std::string_view to);

} // namespace tallyfoot::testing
