#include "Tallyfoot/Facade/Configuration/UploadConfiguration.h"

#include "Tallyfoot/Facade/Configuration/Settings.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tallyfoot {

namespace {

constexpr std::int64_t minimumSeconds = 10;
constexpr std::int64_t minimumEventsCount = 10;

double defaultSeconds() { return std::trunc(DispatchTimeInterval::seconds(1800).timeInterval()); }

// "utility", where the environment's addresses have "utilities": the server knows both.
constexpr const char* fixedPath =
    "/qmx/tallyfootServer/businessareas/utility/subjectareas/tallyfootServer/proxy/tallyfootUploadFiles";

} // namespace

UploadConfiguration::UploadConfiguration(std::int64_t seconds, std::int64_t eventsCount)
    : UploadConfiguration(static_cast<double>(std::max(seconds, minimumSeconds)),
                          std::max(eventsCount, minimumEventsCount), Size::bytes(10485760), std::nullopt) {}

UploadConfiguration::UploadConfiguration(double seconds, std::int64_t eventsCount, Size size,
                                         std::optional<std::string> uploadPath)
    : frequency_(RepeaterInterval::seconds(seconds)), fileSize_(size), eventsCount_(eventsCount), storageSize_(size),
      uploadPath_(std::move(uploadPath)) {}

std::shared_ptr<UploadConfiguration> UploadConfiguration::defaultConfiguration() {
    // Never released, so that the last calls of an ending process still find it.
    static const auto& shared = *new std::shared_ptr<UploadConfiguration>(new UploadConfiguration(
        defaultSeconds(), minimumEventsCount, Size::bytes(5242880), processSettings().environment()->uploadPath()));
    return shared;
}

std::string UploadConfiguration::fixedUploadPath() {
    return std::string("https://") + TALLYFOOT_DEFAULT_UAT_HOST + fixedPath;
}

std::optional<std::string> UploadConfiguration::uploadPath() const { return uploadPath_.copy(); }

void UploadConfiguration::setUploadPath(std::optional<std::string> path) { uploadPath_.exchange(std::move(path)); }

} // namespace tallyfoot
