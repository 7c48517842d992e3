#pragma once

#include "CommandLine/DemoLedger.h"

#include <memory>
#include <string>

namespace tallyfoot::commandline {

struct DemoHostOptions {
    std::string url;
    int threads = 4;
    int eventsCount = 100; // more than this many trigger an upload
    std::string application;
    std::string user = "user-1";
    std::int64_t begun = 0; // events of a former start: the numbers go on behind these
    std::string outputFile; // what the library shows on standard output
};

// A host application as anybody might write one: it links the library, switches it on and logs from
// several threads. It is told what to do by lines of JSON on standard input, and tells what it did by
// lines on standard output, so that somebody else can keep the books:
//   {"log": 500, "pauseMicroseconds": 100}    {"logged": 500} every now and then, {"done": "log"};
//       with "application" one of the threads switches to that application half way
//   {"crash": true}           {"crashing": "SIGSEGV"}, and it does
//   {"nextUser": "user-2"}    the next time it is asked for credentials it says {"asked": true} and waits
//   {"changeUser": true}      … for this; it says {"userChanged": 500}, the events begun so far, and answers
// The end of its input ends it.
class DemoHost {
public:
    explicit DemoHost(const DemoHostOptions& options);
    ~DemoHost();
    DemoHost(const DemoHost&) = delete;
    DemoHost& operator=(const DemoHost&) = delete;

    int run();

private:
    struct User;
    void switchOn();
    void obey(const std::string& line);
    [[noreturn]] void crash();
    void log(std::int64_t count, std::int64_t pauseMicroseconds, const std::string& application);

    DemoHostOptions options_;
    DemoLedger ledger_;
    std::shared_ptr<User> user_;
};

} // namespace tallyfoot::commandline
