#pragma once

#include "Contracts/Implementation.h"
#include "Support/Occurrences.h"

#include "Tallyfoot/Platform/URLSession.h"

#include <cstddef>
#include <memory>
#include <string>

namespace tallyfoot::testing {

// A session and the server that its requests go to: a real one, or the test itself.
class URLSessionHost {
public:
    struct Arrived {
        std::string method;
        std::string headerLines; // each behind a CRLF, with a CRLF at the end
        std::string body;
    };

    virtual ~URLSessionHost() = default;
    virtual URLSession& session() = 0;
    virtual std::shared_ptr<URLSession> takeSession() = 0; // it is the caller's from then on
    virtual std::string url() const = 0;

    virtual void script(Result<std::string> answer) = 0; // for the next request; "{}" where nothing is scripted
    virtual void scriptSilence() = 0;                    // the next request is never answered
    virtual Arrived arrived(std::size_t index) = 0;      // the index-th request, from 0; waits for it
    virtual bool waitFor(const Occurrences& completions, int count) = 0;
};

Implementation<URLSessionHost> posixURLSession();
Implementation<URLSessionHost> manualURLSession();

} // namespace tallyfoot::testing
