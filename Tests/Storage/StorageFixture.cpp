#include "StorageFixture.h"

#include <zip.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace tallyfoot::testing {

StorageFixture::StorageFixture() {
    ::setenv("LC_ALL", "C", 1); // names follow the locale
    ::setenv("TZ", "UTC", 1);
    ::setenv("XDG_DATA_HOME", support.path().c_str(), 1);
}

StorageFixture::~StorageFixture() = default;

std::shared_ptr<AppFolder> StorageFixture::makeAppFolder(const std::string& appName) {
    return std::make_shared<AppFolder>(fileManager, debugConsole(),
                                       std::make_shared<ApplicationInfo>(appName, "shop-1", "Retail", "R-7"));
}

std::unique_ptr<FileHandler> StorageFixture::makeFileHandler(bool isCurrentApplication,
                                                             const std::function<bool(std::string_view)>& isInFlight) {
    return std::make_unique<FileHandler>(FileHandler::Collaborators{fileManager, clock, debugConsole(), settings},
                                         configuration, makeAppFolder(), isCurrentApplication, isInFlight);
}

std::unique_ptr<FileHandler> StorageFixture::makeFileHandler(FileManager& disk, bool isCurrentApplication) {
    auto folder = std::make_shared<AppFolder>(disk, debugConsole(), makeAppFolder()->appInfo());
    return std::make_unique<FileHandler>(FileHandler::Collaborators{disk, clock, debugConsole(), settings},
                                         configuration, std::move(folder), isCurrentApplication);
}

std::string StorageFixture::path(Folder folder, const std::string& name) const {
    const std::string base = support.path().string() + "/Tallyfoot/Shop/";
    const std::string folders[] = {"Events", "Upload", "Backup"};
    const auto whole = base + folders[static_cast<std::size_t>(folder)];
    return name.empty() ? whole : whole + "/" + name;
}

void StorageFixture::putSparse(Folder folder, const std::string& name, std::uint64_t size) {
    put(folder, name, {});
    std::filesystem::resize_file(path(folder, name), size);
}

std::vector<std::string> StorageFixture::names(Folder folder) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path(folder)))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::string StorageFixture::putArchive(const std::string& name,
                                       const std::vector<std::pair<std::string, std::string>>& entries) {
    std::filesystem::create_directories(path(Folder::backup));
    writeArchive(path(Folder::backup, name), entries);
    return path(Folder::backup, name);
}

void writeArchive(const std::string& path, const std::vector<std::pair<std::string, std::string>>& entries,
                  bool isDeflated) {
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_EXCL, nullptr);
    ASSERT_NE(archive, nullptr);
    for (const auto& [name, text] : entries) {
        zip_source_t* source = zip_source_buffer(archive, text.data(), text.size(), 0);
        const auto index = zip_file_add(archive, name.c_str(), source, 0);
        ASSERT_GE(index, 0) << zip_strerror(archive);
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), isDeflated ? ZIP_CM_DEFLATE : ZIP_CM_STORE,
                                 0);
    }
    ASSERT_EQ(zip_close(archive), 0) << zip_strerror(archive);
}

void replaceInFile(const std::string& path, std::string_view from, std::string_view to) {
    auto bytes = readFile(path);
    std::size_t count = 0;
    for (auto at = bytes.find(from); at != bytes.npos; at = bytes.find(from, at + to.size()), ++count) {
        bytes.replace(at, from.size(), to);
    }
    ASSERT_GT(count, 0U);
    writeFile(path, bytes);
}

} // namespace tallyfoot::testing
