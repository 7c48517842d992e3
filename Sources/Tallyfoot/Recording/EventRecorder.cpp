#include "Tallyfoot/Recording/EventRecorder.h"

#include "Tallyfoot/Events/Device.h"
#include "Tallyfoot/Events/StoredRecord.h"
#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Platform/Random.h"
#include "Tallyfoot/Platform/URLSession.h"
#include "Tallyfoot/Platform/UserDefaults.h"
#include "Tallyfoot/Recording/StoreKeys.h"
#include "Tallyfoot/Storage/PathNames.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace tallyfoot {

namespace {

using namespace std::string_view_literals;

// The service's words for "who are you?".
constexpr std::array authenticationRejections{"10000003"sv, "10000008"sv, "10000002"sv};

// On a thread of the library's own nobody would catch what is thrown, and the process would end. What memory
// runs out for stays on disk and is sent later.
template <class Block>
void guarded(Block&& block) noexcept {
    try {
        std::forward<Block>(block)();
    } catch (...) { // NOLINT(bugprone-empty-catch): there is nobody to tell
    }
}

std::string describe(const UploadManager::Parameters& parameters) {
    if (parameters.empty()) return "[:]";
    std::string description;
    for (const auto& [key, value] : parameters) {
        description += description.empty() ? "[" : ", ";
        description += debugDescription(key) + ": " + debugDescription(value);
    }
    return description + "]";
}

} // namespace

std::shared_ptr<EventRecorder> EventRecorder::make(PlatformServices services, Settings& settings,
                                                   std::shared_ptr<UploadConfiguration> configuration,
                                                   std::shared_ptr<ApplicationInfo> appInfo,
                                                   AuthenticationHandler authenticationHandler) {
    std::shared_ptr<EventRecorder> recorder(new EventRecorder(std::move(services), settings, std::move(configuration),
                                                              std::move(appInfo), std::move(authenticationHandler)));
    recorder->authenticationInfo_.exchange(recorder->askForAuthentication());
    // Not in the constructor: the triggers and the uploads refer to the recorder weakly.
    recorder->inTurn([&] {
        const auto current = recorder->appInfo();
        recorder->services_.userDefaults->setObject(storekeys::user, {recorder->authenticationInfo()->userId()});
        recorder->services_.userDefaults->synchronize();
        recorder->knownApplications_.setCurrent(*current);
        recorder->uploadManager_ = recorder->makeUploadManager();
        recorder->setUp(current);
    });
    return recorder;
}

EventRecorder::EventRecorder(PlatformServices services, Settings& settings,
                             std::shared_ptr<UploadConfiguration> configuration,
                             std::shared_ptr<ApplicationInfo> appInfo, AuthenticationHandler authenticationHandler)
    : services_(std::move(services)), settings_(settings), console_(*services_.console, settings.showOutput),
      configuration_(std::move(configuration)), authenticationHandler_(std::move(authenticationHandler)),
      queue_(services_.dispatch->makeQueue("EventRecorder")),
      uploadQueue_(services_.dispatch->makeQueue("EventRecorder.uploads")), appInfo_(std::move(appInfo)),
      knownApplications_(*services_.userDefaults, *services_.keyedArchiver), eventCountMonitor_{
                                                                                 configuration_->eventsCount(), {}} {}

EventRecorder::~EventRecorder() {
    if (frequencyMonitor_) frequencyMonitor_->stop();
}

std::shared_ptr<Authentication> EventRecorder::authenticationInfo() const { return authenticationInfo_.copy(); }

std::shared_ptr<ApplicationInfo> EventRecorder::appInfo() const { return appInfo_.copy(); }

std::shared_ptr<Authentication> EventRecorder::askForAuthentication() const {
    if (!authenticationHandler_) fatalError("there is no authentication closure");
    auto authentication = authenticationHandler_();
    if (!authentication) fatalError("the authentication closure returned nothing");
    return authentication;
}

std::shared_ptr<UploadManager> EventRecorder::makeUploadManager() {
    const auto path = configuration_->uploadPath();
    const UploadManager::Collaborators collaborators{*services_.fileManager, *services_.random, console_,
                                                     services_.makeURLSession(), [this] {
                                                         if (!sender_) fatalError("an upload needs an authentication");
                                                         return sender_->authenticationToken();
                                                     }};
    return std::make_shared<UploadManager>(collaborators,
                                           path ? path : std::optional(settings_.environment()->uploadPath()));
}

void EventRecorder::setUp(const std::shared_ptr<ApplicationInfo>& appInfo) {
    fileHandler_ = makeFileHandler(appInfo, true);

    if (frequencyMonitor_) frequencyMonitor_->stop();
    frequencyMonitor_ = FrequencyMonitor::make(
        {*services_.dispatch, *services_.clock, *services_.userDefaults, console_}, configuration_->frequency());
    frequencyMonitor_->start();

    const auto trigger = [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) guarded([&] { self->triggerUpload(); });
    };
    frequencyMonitor_->setTriggerUpload(trigger); // a period that is over already triggers at once
    fileHandler_->setTriggerUpload(trigger);
    eventCountMonitor_ = {configuration_->eventsCount(), trigger};
}

std::shared_ptr<FileHandler> EventRecorder::makeFileHandler(std::shared_ptr<const ApplicationInfo> appInfo,
                                                            bool isCurrent) {
    auto folder = std::make_shared<AppFolder>(*services_.fileManager, console_, std::move(appInfo));
    const auto isOnItsWay = [this, backup = folder->path(AppFolder::Folder::backup)](std::string_view name) {
        return isClaimed(backup + '/' + std::string(name));
    };
    return std::make_shared<FileHandler>(
        FileHandler::Collaborators{*services_.fileManager, *services_.clock, console_, settings_}, configuration_,
        std::move(folder), isCurrent, isOnItsWay);
}

void EventRecorder::record(std::string_view storedRecord) {
    inTurn([&] {
        fileHandler_->write(storedRecord);
        const auto former = services_.userDefaults->integer(storekeys::eventCount);
        const auto count = former + (former < std::numeric_limits<std::int64_t>::max() ? 1 : 0);
        setEventCount(count);
        if (eventCountMonitor_.thresholdCount < count && eventCountMonitor_.triggerUpload)
            eventCountMonitor_.triggerUpload();
    });
}

void EventRecorder::setEventCount(std::int64_t count) {
    services_.userDefaults->setInteger(storekeys::eventCount, count);
    services_.userDefaults->synchronize();
}

void EventRecorder::triggerUpload() {
    if (isUploading_.exchange(true)) return;
    std::shared_ptr<FileHandler> fileHandler;
    inTurn([&] {
        // Within the turn, so that whatever is recorded next may trigger again; also after a failure.
        struct End {
            std::atomic<bool>& isUploading;
            ~End() { isUploading = false; }
        } const end{isUploading_};
        fileHandler_->close();
        setEventCount(0);
        frequencyMonitor_->restart();
        services_.userDefaults->setReal(storekeys::eventLastUpload, timeIntervalSince1970(services_.clock->now()));
        services_.userDefaults->synchronize();
        fileHandler = fileHandler_;
    });
    submitUpload(std::move(fileHandler));
}

void EventRecorder::submitUpload(std::shared_ptr<FileHandler> fileHandler) {
    uploadQueue_->async([self = shared_from_this(), fileHandler = std::move(fileHandler)] {
        guarded([&] { self->upload(fileHandler); });
    });
}

void EventRecorder::upload(const std::shared_ptr<FileHandler>& fileHandler) {
    const auto lock = fileHandler->lockClosedFiles();
    if (!lock) return; // another process is at it; the next upload, its or ours, has what is closed now
    const auto turn = [this](FunctionRef<void()> block) { inTurn(block); };
    fileHandler->zip(turn);

    std::vector<std::string> archives;
    bool isEmpty = false;
    inTurn([&] {
        archives = fileHandler->appFolder().archivePaths();
        isEmpty = archives.empty();
        if (isEmpty) forgetIfOld(*fileHandler);
        std::erase_if(archives, [this](const std::string& archive) { return !claim(archive); });
        // Kept for the whole folder: credentials refreshed meanwhile may be another user's.
        sender_ = authenticationInfo();
    });
    if (isEmpty) return;

    const auto& appInfo = *fileHandler->appFolder().appInfo();
    console_.print({"Uploading logs for applicaton ", appInfo.appName()});
    const auto parameters = bodyParameters(appInfo, *sender_);
    printSummary(parameters);
    for (const auto& archive : archives)
        uploadManager_->upload(
            archive, parameters,
            [weakSelf = weak_from_this(), fileHandler, archive, lock](const UploadManager::Outcome& outcome) {
                if (const auto self = weakSelf.lock()) self->completeUpload(*fileHandler, archive, outcome);
            });
}

bool EventRecorder::claim(const std::string& archivePath) {
    if (FileHandler::isRestoring(archivePath)) return false; // by a recorder before this one
    if (uploadManager_->isUploading(lastPathComponent(archivePath))) return false;
    return claimedArchives_.modify([&](auto& claimed) { return claimed.insert(archivePath).second; });
}

bool EventRecorder::isClaimed(const std::string& archivePath) const {
    return claimedArchives_.read([&](const auto& claimed) { return claimed.contains(archivePath); });
}

void EventRecorder::forgetIfOld(FileHandler& fileHandler) {
    auto& folder = fileHandler.appFolder();
    const auto& appName = folder.appName();
    if (appName == appInfo()->appName()) return;
    // Logs that could not be packed, that were closed since, or that cannot be seen at the moment: the
    // next upload of the folder has them.
    if (folder.mayHoldLogs()) return;
    console_.print({"Empty folder app name ", appName});
    knownApplications_.remove(appName);
    folder.removeAll();
}

UploadManager::Parameters EventRecorder::bodyParameters(const ApplicationInfo& appInfo,
                                                        const Authentication& sender) const {
    UploadManager::Parameters parameters;
    Device(services_).attributes().forEach(
        [&](LogAttribute key, const std::string& value) { parameters[std::string(rawValue(key))] = value; });
    parameters["appName"] = appInfo.appName();
    parameters["appid"] = appInfo.appId();
    parameters["bizarea"] = appInfo.bizArea();
    parameters["bizareaid"] = appInfo.bizAreaId();
    parameters["userId"] = sender.userId();
    parameters["authtoken"] = sender.authenticationToken();
    parameters["delimeter"] = recordSeparator;
    return parameters;
}

void EventRecorder::printSummary(const UploadManager::Parameters& parameters) const {
    if (!console_.isOn()) return;
    const auto configuration = settings_.uploadConfiguration.copy();
    const auto path = configuration ? configuration->uploadPath() : std::nullopt;
    console_.print("************************************Request Info Begin************************************");
    console_.print({"url is: ", path.value_or("NA")});
    console_.print({"Body parameters: ", describe(parameters)});
    console_.print("************************************Request Info End *************************************");
}

void EventRecorder::completeUpload(FileHandler& fileHandler, const std::string& archivePath,
                                   const UploadManager::Outcome& outcome) {
    guarded([&] { applyOutcome(fileHandler, archivePath, outcome); });
    claimedArchives_.modify([&](auto& claimed) { claimed.erase(archivePath); });
}

void EventRecorder::applyOutcome(FileHandler& fileHandler, const std::string& archivePath,
                                 const UploadManager::Outcome& outcome) {
    const auto turn = [this](FunctionRef<void()> block) { inTurn(block); };
    const auto* results = std::get_if<std::vector<UploadResult>>(&outcome);
    if (results == nullptr || results->empty()) {
        fileHandler.restore(archivePath, {}, turn);
        return;
    }

    const auto& result = results->front();
    console_.print({"Reponse Code is: ", result.statusCode});
    if (std::find(authenticationRejections.begin(), authenticationRejections.end(), result.statusCode)
        != authenticationRejections.end()) {
        fileHandler.restore(archivePath, {}, turn);
        refreshAuthentication(fileHandler);
    } else if (result.failure && !result.failure->empty()) {
        fileHandler.restore(archivePath, result.success.value_or(std::vector<std::string>{}), turn);
    } else {
        inTurn([&] { fileHandler.appFolder().remove(archivePath); });
    }
}

void EventRecorder::refreshAuthentication(FileHandler& fileHandler) {
    std::shared_ptr<Authentication> refreshed;
    try {
        refreshed = askForAuthentication();
    } catch (...) { // the host's own failure: the former credentials stay, the next rejection asks again
        return;
    }
    // In one turn: no upload takes the new credentials while the former user's logs are still there.
    inTurn([&] {
        authenticationInfo_.exchange(refreshed);
        checkUser(*refreshed, fileHandler);
    });
}

void EventRecorder::checkUser(const Authentication& refreshed, FileHandler& fileHandler) {
    const auto stored = services_.userDefaults->object(storekeys::user);
    const auto* former = stored ? stored->as<std::string>() : nullptr;
    // Logs of one user are never sent under another user's token.
    if (former != nullptr && *former != refreshed.userId()) fileHandler.deleteAllLogs();
    services_.userDefaults->setObject(storekeys::user, {refreshed.userId()});
    services_.userDefaults->synchronize();
}

void EventRecorder::switchApplication(std::shared_ptr<ApplicationInfo> appInfo) {
    inTurn([&] {
        appInfo_.exchange(appInfo);
        fileHandler_->close();
        setEventCount(0);
        knownApplications_.setCurrent(*appInfo);
        if (console_.isOn())
            for (const auto& known : knownApplications_.list()) console_.printBlock(known->appName() + "\n");
        setUp(appInfo);
        uploadOldApplications();
    });
}

void EventRecorder::uploadOldApplications() {
    const auto current = appInfo();
    for (const auto& known : knownApplications_.list()) {
        if (known->appName() == current->appName()) continue;
        console_.print({"calling upload for old app ", known->appName()});
        submitUpload(makeFileHandler(known, false));
    }
}

} // namespace tallyfoot
