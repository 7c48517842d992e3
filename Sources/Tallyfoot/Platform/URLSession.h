#pragma once

#include "Tallyfoot/Platform/Result.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tallyfoot {

struct URLRequest {
    std::string url; // absolute, http or https
    std::string method = "GET";
    std::vector<std::pair<std::string, std::string>> headers;
    std::vector<std::string> body;    // pieces, sent one behind the other: a large one is moved in, not copied
    std::chrono::seconds timeout{60}; // of silence; any data starts it anew

    std::size_t bodySize() const noexcept {
        std::size_t size = 0;
        for (const auto& piece : body) size += piece.size();
        return size;
    }
};

// The answer's body, empty where it had none. The HTTP status is nobody's business here.
using DataTaskCompletion = std::function<void(Result<std::string>)>;

// Sends requests. Any thread. Completions run on the session's own thread, one at a time, each
// exactly once, and may start further tasks. A header value with CR, LF or NUL is left out.
// Apple: NSURLSession.
class URLSession {
public:
    // Tasks under way are dropped without a completion.
    virtual ~URLSession() = default;
    virtual void dataTask(URLRequest request, DataTaskCompletion completion) = 0; // made and resumed
};

// An absolute http or https address with a host and without spaces. Anything else is no URL.
bool isUploadURL(const std::string& url);

} // namespace tallyfoot
