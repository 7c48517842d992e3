#pragma once

#include "Tallyfoot/Platform/URLSession.h"

#include <memory>

namespace tallyfoot {

// Requests over libcurl. The first task starts the session's thread, which lives as long as the
// session, is deaf to signals and keeps connections for later tasks; six tasks run at a time, and a
// task's time of silence begins when its turn comes. Where the system has no thread to give, a task
// fails at once, on the caller's thread; where it has no files, on the session's. See CurlTransfer for
// where a request goes.
//
// A request on a connection that proves dead before any answer is sent anew on a fresh one; a
// server may so see it twice, as it may after any failed upload.
//
// The session may be released from one of its completions. Once it is, no completion begins; one
// that runs on the session's thread then is not waited for.
//
// The numbers of standard streams that the host has closed lead nowhere once something is sent: libcurl
// would put its own files there. The host may still put a stream of its own there at any time.
class PosixURLSession final : public URLSession {
public:
    PosixURLSession();
    ~PosixURLSession() override;
    void dataTask(URLRequest request, DataTaskCompletion completion) override;

private:
    class Worker;
    std::shared_ptr<Worker> worker_;
};

} // namespace tallyfoot
