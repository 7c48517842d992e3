#pragma once

#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/FileManager.h"
#include "Tallyfoot/Platform/Random.h"
#include "Tallyfoot/Platform/URLSession.h"
#include "Tallyfoot/Upload/UploadError.h"
#include "Tallyfoot/Upload/UploadResult.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tallyfoot {

// Sends one archive at a time to the upload endpoint and tells what became of it. `upload` is
// called off the recorder's turn; completions run on the session's thread. A manager that is gone
// completes nothing.
class UploadManager : public std::enable_shared_from_this<UploadManager> {
public:
    using Outcome = std::variant<std::vector<UploadResult>, UploadError>;
    using Completion = std::function<void(Outcome)>;
    using Parameters = std::map<std::string, std::string>;

    struct Collaborators {
        FileManager& fileManager;
        Random& random;
        DebugConsole console;
        std::shared_ptr<URLSession> urlSession;
        std::function<std::string()> authenticationToken; // asked at each upload; sent as the whole "cookie" header
    };

    UploadManager(Collaborators collaborators, std::optional<std::string> uploadPath);

    void upload(const std::string& archivePath, const Parameters& parameters, Completion completion);

    // Started and not yet answered.
    bool isUploading(std::string_view fileName) const;

private:
    // (the implementer of this room shapes what follows)
};

} // namespace tallyfoot
