#pragma once

#include "Tallyfoot/Facade/EventPipeline.h"
#include "Tallyfoot/Facade/Seams.h"
#include "Tallyfoot/Facade/Tallyfoot.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace tallyfoot {

// What stands behind the facade: its state, and how configuration and application come together.
struct TALLYFOOT_INTERNAL Tallyfoot::Implementation {
    Implementation();
    static Implementation& shared() noexcept;

    void configure(std::shared_ptr<UploadConfiguration> configuration, const std::vector<std::string>& ignoreClasses,
                   AuthenticationClosure authenticationClosure);
    void setAppInfo(std::shared_ptr<ApplicationInfo> appInfo);
    void installInterceptionsOnce();
    void setSeams(Seams seams); // before the first configure

    Exclusive<std::shared_ptr<ApplicationInfo>> appInfo;
    Exclusive<CategoryTitles> categoryCustomTitles;
    std::atomic<bool> isSwizzled = false;
    EventPipeline pipeline;

private:
    void updateApplicationInfo();
    void bringRecorderUpToDate();

    // The host's closures run inside an update, so that no lock may be held meanwhile: whoever comes
    // while one is under way leaves word that there is more to do.
    enum class Update { none, underWay, wantedAgain };
    Exclusive<Update> update_;
    Exclusive<std::shared_ptr<const AuthenticationClosure>> authenticationHandler_;
    Exclusive<Seams> seams_;
};

} // namespace tallyfoot
