#pragma once

#include "Tallyfoot/Crash/CrashContext.h"
#include "Tallyfoot/Crash/ExceptionHandler.h"
#include "Tallyfoot/Facade/EventPipeline.h"
#include "Tallyfoot/Facade/Seams.h"
#include "Tallyfoot/Facade/Tallyfoot.h"
#include "Tallyfoot/Platform/Exclusive.h"

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

    Exclusive<CategoryTitles> categoryCustomTitles;
    std::atomic<bool> isSwizzled = false;
    CrashContext crashContext;
    EventPipeline pipeline;

private:
    class LoggedCrash;
    void updateApplicationInfo();
    bool startRecording();
    void switchIfOther(EventRecorder& recorder);

    // The host's closure runs inside a start, so that no lock may be held meanwhile: whoever comes
    // while one is under way leaves word that there is more to do.
    enum class Start { none, underWay, wantedAgain };
    Exclusive<Start> start_;
    Mutex switching_; // one switch at a time, so that a caller's events go where its setAppInfo said
    Exclusive<std::shared_ptr<const AuthenticationClosure>> authenticationHandler_;
    Exclusive<Seams> seams_;
    const std::unique_ptr<CrashFacade> crashFacade_;
    ExceptionHandler exceptionHandler_;
};

} // namespace tallyfoot
