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

// Sends archives to the upload endpoint, a request each, and tells what became of them. `upload` is
// called off the recorder's turn; completions run on the session's thread, exactly once an upload
// and with nothing held. A manager that is gone completes nothing. Held by a shared pointer.
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

    // Reads the file and sends it. What cannot be sent completes at once, on the caller's thread:
    // an unreadable file with invalidData, an upload path that is unset or no URL with
    // invalidUploadPath. Any answer with a well-formed body is a result, whatever its HTTP status.
    // Who does not want a name sent twice asks isUploading first: a second upload of the same name
    // is sent as well, and the first answer counts as the name's.
    void upload(const std::string& archivePath, const Parameters& parameters, Completion completion);

    // Started and not yet answered. A name whose request could not be built stays in; one whose
    // file could not be read does not.
    bool isUploading(std::string_view fileName) const;

private:
    void forget(const std::string& fileName);
    void reportFailure(std::string_view fileName, const Error& error) const;
    Outcome outcome(std::string_view fileName, const Result<std::string>& answer) const;
    Outcome decode(std::string_view body) const;

    const Collaborators collaborators_;
    const std::optional<std::string> uploadPath_;
    Exclusive<std::set<std::string, std::less<>>> uploadsInProgress_; // the uploading and the session's thread
};

} // namespace tallyfoot
