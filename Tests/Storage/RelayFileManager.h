#pragma once

#include "Tallyfoot/Platform/FileManager.h"

namespace tallyfoot::testing {

// Passes everything on. A test overrides the one answer that no real disk gives on demand.
class RelayFileManager : public FileManager {
public:
    explicit RelayFileManager(FileManager& next) : next_(next) {}

    std::optional<std::string> applicationSupportDirectory() const override {
        return next_.applicationSupportDirectory();
    }
    bool fileExists(const std::string& path) const override { return next_.fileExists(path); }
    bool directoryExists(const std::string& path) const override { return next_.directoryExists(path); }
    Result<FileAttributes> attributesOfItem(const std::string& path) const override {
        return next_.attributesOfItem(path);
    }
    Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override {
        return next_.contentsOfDirectory(path);
    }
    Result<std::vector<std::string>> subpathsOfDirectory(const std::string& path) const override {
        return next_.subpathsOfDirectory(path);
    }
    Result<void> createDirectory(const std::string& path) override { return next_.createDirectory(path); }
    Result<void> moveItem(const std::string& source, const std::string& destination) override {
        return next_.moveItem(source, destination);
    }
    Result<void> replaceItem(const std::string& source, const std::string& destination) override {
        return next_.replaceItem(source, destination);
    }
    Result<void> removeItem(const std::string& path) override { return next_.removeItem(path); }
    Result<std::string> contents(const std::string& path) const override { return next_.contents(path); }
    Result<void> writeAtomically(const std::string& path, std::string_view bytes) override {
        return next_.writeAtomically(path, bytes);
    }
    Result<std::unique_ptr<FileHandle>> fileHandleForWriting(const std::string& path) override {
        return next_.fileHandleForWriting(path);
    }
    std::shared_ptr<ProcessLock> lock(const std::string& path) override { return next_.lock(path); }

private:
    FileManager& next_;
};

} // namespace tallyfoot::testing
