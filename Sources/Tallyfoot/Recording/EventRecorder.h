#pragma once

#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"
#include "Tallyfoot/Facade/Configuration/Authentication.h"
#include "Tallyfoot/Facade/Configuration/Settings.h"
#include "Tallyfoot/Facade/Configuration/UploadConfiguration.h"
#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/Dispatch.h"
#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Recording/EventCountMonitor.h"
#include "Tallyfoot/Recording/FrequencyMonitor.h"
#include "Tallyfoot/Recording/KnownApplications.h"
#include "Tallyfoot/Storage/FileHandler.h"
#include "Tallyfoot/Upload/UploadManager.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tallyfoot {

// The spine: takes formatted events, keeps them on disk, and decides what becomes of the files.
//
//     record ─> FileHandler          (full, more events than the threshold, or the period is over)
//                   └── triggerUpload ─> close, count = 0, new period ─> upload ─> answer:
//                       all arrived: the archive goes      some did not: those return to Upload
//                       error: everything returns          token rejected: that, and fresh credentials
//
// The queue's turn orders all work on files and counts; nothing else touches them. Folder uploads
// run one after another on a queue of their own, which takes the turn for each step on files, so
// that packing and sending never keep a `record` waiting. The turn is never held while the host's
// closure runs. Any thread.
class EventRecorder : public std::enable_shared_from_this<EventRecorder> {
public:
    using AuthenticationHandler = std::function<std::shared_ptr<Authentication>()>;

    // Asks the handler for the user's credentials, notes user and application in the store, and
    // restores what an earlier run left. Fatal without a handler or a result.
    static std::shared_ptr<EventRecorder> make(PlatformServices services, Settings& settings,
                                               std::shared_ptr<UploadConfiguration> configuration,
                                               std::shared_ptr<ApplicationInfo> appInfo,
                                               AuthenticationHandler authenticationHandler);
    ~EventRecorder();

    // One event as it is stored (`makeStoredRecord`). On disk and counted when the call returns.
    void record(std::string_view storedRecord);

    // Closes the current file and sends what is closed. What comes while another call is at it is ignored.
    void triggerUpload();

    // From now on records belong to this application; what the former ones left is uploaded.
    void switchApplication(std::shared_ptr<ApplicationInfo> appInfo);

    std::shared_ptr<Authentication> authenticationInfo() const;
    std::shared_ptr<ApplicationInfo> appInfo() const;

private:
    EventRecorder(PlatformServices services, Settings& settings, std::shared_ptr<UploadConfiguration> configuration,
                  std::shared_ptr<ApplicationInfo> appInfo, AuthenticationHandler authenticationHandler);

    // With the turn held.
    std::shared_ptr<UploadManager> makeUploadManager();
    void setUp(const std::shared_ptr<ApplicationInfo>& appInfo);
    void uploadOldApplications();
    void forgetIfOld(FileHandler& fileHandler);
    void checkUser(const Authentication& refreshed, FileHandler& fileHandler);
    void setEventCount(std::int64_t count);
    bool claim(const std::string& archivePath); // false while it is on its way already
    std::shared_ptr<FileHandler> makeFileHandler(std::shared_ptr<const ApplicationInfo> appInfo, bool isCurrent);

    // Without it.
    std::shared_ptr<Authentication> askForAuthentication() const;
    void submitUpload(std::shared_ptr<FileHandler> fileHandler);
    void upload(const std::shared_ptr<FileHandler>& fileHandler);
    void completeUpload(FileHandler& fileHandler, const std::string& archivePath,
                        const UploadManager::Outcome& outcome);
    void applyOutcome(FileHandler& fileHandler, const std::string& archivePath, const UploadManager::Outcome& outcome);
    bool isClaimed(const std::string& archivePath) const;
    void refreshAuthentication(FileHandler& fileHandler);
    UploadManager::Parameters bodyParameters(const ApplicationInfo& appInfo, const Authentication& sender) const;
    void printSummary(const UploadManager::Parameters& parameters) const;

    void inTurn(FunctionRef<void()> block) { queue_->sync(block); }

    const PlatformServices services_;
    Settings& settings_;
    const DebugConsole console_;
    const std::shared_ptr<UploadConfiguration> configuration_;
    const AuthenticationHandler authenticationHandler_;
    const std::shared_ptr<DispatchQueue> queue_;
    const std::shared_ptr<DispatchQueue> uploadQueue_;
    std::shared_ptr<UploadManager> uploadManager_;
    std::atomic<bool> isUploading_ = false; // a trigger is at work; never held across an upload

    // From before an archive is read until its answer has been dealt with, longer than the uploader
    // knows of it: who restored it in between would have it sent twice.
    Exclusive<std::set<std::string>> claimedArchives_;

    Exclusive<std::shared_ptr<Authentication>> authenticationInfo_;
    Exclusive<std::shared_ptr<ApplicationInfo>> appInfo_;

    // Belongs to the upload queue: whose token goes with the parameters of the folder being sent.
    std::shared_ptr<Authentication> sender_;

    // Belong to the turn.
    KnownApplications knownApplications_;
    std::shared_ptr<FileHandler> fileHandler_;
    std::shared_ptr<FrequencyMonitor> frequencyMonitor_;
    EventCountMonitor eventCountMonitor_;
};

} // namespace tallyfoot
