#pragma once

#include "Support/ManualClock.h"
#include "Support/ManualDispatch.h"
#include "Support/ManualURLSession.h"
#include "Support/RecordingConsole.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Facade/Configuration/Settings.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Recording/EventRecorder.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// A recorder on real files and a real store, with time and the server's answers in the test's hands.
class RecorderHost {
public:
    struct Options {
        std::int64_t seconds = 60;
        std::int64_t eventsCount = 10;
        std::string appName = "Shop";
        bool showOutput = false;
    };

    RecorderHost() : RecorderHost(Options{}) {}

    explicit RecorderHost(Options options);
    ~RecorderHost(); // settles: a block that waits would hold its recorder for ever

    void start(); // makes the recorder, as a first start or the next
    void start(std::shared_ptr<ApplicationInfo> appInfo);
    void start(const EventRecorder::AuthenticationHandler& closure);

    void stop() { recorder.reset(); } // as if the process had ended

    void log(int count = 1); // records that many numbered events

    void settle() { dispatch->drain(); } // lets queued uploads run

    void trigger(); // a trigger, and its upload up to the request
    void switchTo(const std::string& appName);

    std::filesystem::path folder(const std::string& appName, const std::string& name) const;
    std::vector<std::string> files(const std::string& name) const; // of the current application, sorted
    std::vector<std::string> files(const std::string& appName, const std::string& name) const;
    std::vector<std::string> knownApplications() const;
    std::int64_t eventCount() const;

    TemporaryFolder root;
    std::shared_ptr<ManualClock> clock;
    std::shared_ptr<ManualDispatch> dispatch;
    std::shared_ptr<RecordingConsole> console = std::make_shared<RecordingConsole>();
    std::shared_ptr<ManualURLSession> server = std::make_shared<ManualURLSession>();
    Settings settings;
    PlatformServices services;
    std::shared_ptr<UploadConfiguration> configuration;
    std::string userId = "user-1";
    std::string token = "token-1";
    int authenticationsAsked = 0;
    std::string appName;
    std::shared_ptr<EventRecorder> recorder;

private:
    EventRecorder::AuthenticationHandler closure();

    int logged_ = 0;
};

std::shared_ptr<ApplicationInfo> application(const std::string& appName);
std::string field(const URLRequest& request, const std::string& name); // a text part of a multipart body
std::vector<std::string> events(const std::string& text);              // the "evtLabel" of each stored record
std::vector<std::string> sentEvents(const URLRequest& request);        // the same, of the archive in the body

} // namespace tallyfoot::testing
