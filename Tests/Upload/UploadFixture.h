#pragma once

#include "Support/RecordingConsole.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Platform/Posix/PosixRandom.h"
#include "Tallyfoot/Upload/UploadManager.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace tallyfoot::testing {

// An upload manager over real files, with the session of the test's choice.
class UploadFixture {
public:
    using Outcome = UploadManager::Outcome;

    UploadFixture(std::shared_ptr<URLSession> session, std::optional<std::string> uploadPath) {
        manager = std::make_shared<UploadManager>(
            UploadManager::Collaborators{fileManager, random, DebugConsole(console, isOn), std::move(session),
                                         [this] { return token; }},
            std::move(uploadPath));
    }

    // The path of an archive with these bytes.
    std::string archive(const std::string& name, std::string_view bytes = "PK") const {
        writeFile(folder / name, bytes);
        return folder / name;
    }

    RecordingConsole console;
    std::atomic<bool> isOn{true};
    std::string token = "token-1";
    TemporaryFolder folder;
    PosixFileManager fileManager;
    PosixRandom random;
    std::shared_ptr<UploadManager> manager;
};

inline const UploadResult* resultOf(const UploadManager::Outcome& outcome) {
    const auto* const results = std::get_if<std::vector<UploadResult>>(&outcome);
    return results != nullptr && results->size() == 1 ? &results->front() : nullptr;
}

inline std::optional<UploadError::Kind> errorKindOf(const UploadManager::Outcome& outcome) {
    const auto* const error = std::get_if<UploadError>(&outcome);
    return error != nullptr ? std::optional(error->kind) : std::nullopt;
}

inline std::string errorTextOf(const UploadManager::Outcome& outcome) {
    const auto* const error = std::get_if<UploadError>(&outcome);
    return error != nullptr ? error->description : "(no error)";
}

} // namespace tallyfoot::testing
