#include "Recording/RecorderHost.h"

#include "Support/RequestBody.h"

#include "Tallyfoot/Events/StoredRecord.h"
#include "Tallyfoot/Platform/KeyedArchiver.h"
#include "Tallyfoot/Platform/UserDefaults.h"
#include "Tallyfoot/Recording/StoreKeys.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <zip.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace tallyfoot::testing {

RecorderHost::RecorderHost(Options options)
    : clock(std::make_shared<ManualClock>()),
      dispatch(std::make_shared<ManualDispatch>(ManualDispatch::Options{.clock = clock})),
      configuration(std::make_shared<UploadConfiguration>(options.seconds, options.eventsCount)),
      appName(options.appName) {
    // Before the first use of the platform's services: each test is a process of its own.
    ::setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
    ::setenv("TALLYFOOT_MAIN_BUNDLE", (root / "bundle").c_str(), 1);
    services = defaultPlatformServices();
    services.clock = clock;
    services.console = console;
    services.dispatch = dispatch;
    services.makeURLSession = [this] { return server; };
    settings.showOutput = options.showOutput;
    configuration->setUploadPath("http://127.0.0.1:1/upload");
}

RecorderHost::~RecorderHost() { settle(); }

void RecorderHost::start() { start(application(appName)); }

void RecorderHost::start(std::shared_ptr<ApplicationInfo> appInfo) {
    recorder = EventRecorder::make(services, settings, configuration, std::move(appInfo), closure());
}

void RecorderHost::start(const EventRecorder::AuthenticationHandler& closure) {
    recorder = EventRecorder::make(services, settings, configuration, application(appName), closure);
}

EventRecorder::AuthenticationHandler RecorderHost::closure() {
    return [this] {
        ++authenticationsAsked;
        return std::make_shared<Authentication>(userId, token);
    };
}

void RecorderHost::log(int count) {
    for (int event = 0; event < count; ++event) {
        recorder->record(nlohmann::json{{"evtLabel", std::to_string(++logged_)}}.dump() + "jsonsplit");
    }
}

void RecorderHost::trigger() {
    recorder->triggerUpload();
    settle();
}

void RecorderHost::switchTo(const std::string& name) {
    appName = name;
    recorder->switchApplication(application(name));
}

std::filesystem::path RecorderHost::folder(const std::string& application, const std::string& name) const {
    return root.path() / "data" / "Tallyfoot" / application / name;
}

std::vector<std::string> RecorderHost::files(const std::string& application, const std::string& name) const {
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(folder(application, name)))
        names.push_back(file.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> RecorderHost::files(const std::string& name) const { return files(appName, name); }

std::vector<std::string> RecorderHost::knownApplications() const {
    std::vector<std::string> names;
    for (const auto& known : KnownApplications(*services.userDefaults, *services.keyedArchiver).list())
        names.push_back(known->appName());
    return names;
}

std::int64_t RecorderHost::eventCount() const { return services.userDefaults->integer(storekeys::eventCount); }

std::shared_ptr<ApplicationInfo> application(const std::string& appName) {
    return std::make_shared<ApplicationInfo>(appName, appName + "-id", "Retail", "R-7");
}

std::string field(const URLRequest& request, const std::string& name) {
    const std::string head = "name=\"" + name + "\"\r\n\r\n";
    const auto body = bodyOf(request);
    const auto begin = body.find(head);
    if (begin == std::string::npos) return "(no field " + name + ")";
    const auto text = begin + head.size();
    return body.substr(text, body.find("\r\n--", text) - text);
}

std::vector<std::string> events(const std::string& text) {
    std::vector<std::string> labels;
    for (std::size_t begin = 0; begin < text.size();) {
        const auto end = text.find(recordSeparator, begin);
        labels.push_back(nlohmann::json::parse(text.substr(begin, end - begin)).at("evtLabel").get<std::string>());
        begin = end + recordSeparator.size();
    }
    return labels;
}

std::vector<std::string> sentEvents(const URLRequest& request) {
    const auto body = bodyOf(request);
    const auto begin = body.find("PK\x03\x04");
    const auto end = body.rfind("\r\n--");
    if (begin == std::string::npos || end == std::string::npos) return {"(no archive)"};
    const std::string archive = body.substr(begin, end - begin);
    zip_error_t error;
    zip_source_t* source = zip_source_buffer_create(archive.data(), archive.size(), 0, &error);
    zip_t* zip = zip_open_from_source(source, ZIP_RDONLY, &error);
    if (zip == nullptr) return {"(an archive that cannot be read)"};
    std::string text;
    for (zip_int64_t index = 0; index < zip_get_num_entries(zip, 0); ++index) {
        zip_file_t* file = zip_fopen_index(zip, static_cast<zip_uint64_t>(index), 0);
        char block[4096];
        for (zip_int64_t count = 0; (count = zip_fread(file, block, sizeof block)) > 0;)
            text.append(block, static_cast<std::size_t>(count));
        zip_fclose(file);
    }
    zip_discard(zip);
    auto labels = events(text);
    std::sort(labels.begin(), labels.end()); // the order of files with one creation date is free
    return labels;
}

} // namespace tallyfoot::testing
