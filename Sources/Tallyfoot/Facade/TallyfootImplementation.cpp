#include "Tallyfoot/Facade/TallyfootImplementation.h"

#include "Tallyfoot/Facade/CaptureConnection.h"
#include "Tallyfoot/Facade/CrashConnection.h"
#include "Tallyfoot/Recording/EventRecorder.h"

#include <utility>

namespace tallyfoot {

// How a crash of the previous run reaches the pipeline.
class Tallyfoot::Implementation::LoggedCrash final : public CrashFacade {
public:
    explicit LoggedCrash(EventPipeline& pipeline) : pipeline_(pipeline) {}

    void log(EventType type, Attributes& attributes) override { pipeline_.log(type, attributes, std::nullopt); }
    bool isIgnored(std::string_view category) const override {
        return pipeline_.context()->ignoreClasses.contains(category);
    }
    const DebugConsole& console() const override { return console_; }

private:
    EventPipeline& pipeline_;
    const DebugConsole console_{*defaultPlatformServices().console, processSettings().showOutput};
};

Tallyfoot::Implementation::Implementation()
    : crashContext(*defaultPlatformServices().crashHooks),
      pipeline(defaultPlatformServices(), processSettings(), crashContext),
      crashFacade_(std::make_unique<LoggedCrash>(pipeline)),
      // NOLINTNEXTLINE(bugprone-throw-keyword-missing): a handler of exceptions, none itself
      exceptionHandler_(defaultPlatformServices(), crashContext, *crashFacade_) {
    setSeams({.installInterceptions = installConnectedCapture, .installCrashHooks = [this] {
                  connectExceptionsTo(*defaultPlatformServices().crashHooks);
                  exceptionHandler_.install();
              }});
}

void Tallyfoot::Implementation::setSeams(Seams seams) { seams_.exchange(std::move(seams)); }

void Tallyfoot::Implementation::configure(std::shared_ptr<UploadConfiguration> configuration,
                                          const std::vector<std::string>& ignoreClasses,
                                          AuthenticationClosure authenticationClosure) {
    std::vector<ITFClass> ignored;
    for (const auto& name : ignoreClasses)
        if (const auto itfClass = fromRawValue<ITFClass>(name)) ignored.push_back(*itfClass);

    if (authenticationClosure)
        authenticationHandler_.exchange(
            std::make_shared<const AuthenticationClosure>(std::move(authenticationClosure)));
    processSettings().uploadConfiguration.exchange(configuration ? std::move(configuration)
                                                                 : UploadConfiguration::defaultConfiguration());
    updateApplicationInfo();
    installInterceptionsOnce();
    seams_.copy().installCrashHooks();

    const auto titles = categoryCustomTitles.copy();
    pipeline.changeContext([&](EventPipeline::Context& context) {
        context.ignoreClasses.clear();
        for (const auto itfClass : ignored) context.ignoreClasses.insert(category(itfClass, titles));
    });
}

void Tallyfoot::Implementation::setAppInfo(std::shared_ptr<ApplicationInfo> info) {
    pipeline.changeContext([&](EventPipeline::Context& context) { context.appInfo = std::move(info); });
    updateApplicationInfo();
}

void Tallyfoot::Implementation::installInterceptionsOnce() {
    if (!isSwizzled.exchange(true)) seams_.copy().installInterceptions();
}

void Tallyfoot::Implementation::updateApplicationInfo() {
    if (const auto recorder = pipeline.context()->recorder) return switchIfOther(*recorder);
    const bool isOurs = start_.modify([](Start& start) {
        const bool isFree = start == Start::none;
        start = isFree ? Start::underWay : Start::wantedAgain;
        return isFree;
    });
    if (!isOurs) return;
    // Who came meanwhile may have brought what was wrong: another try. Not for ever, since a closure
    // that fails may have left the word itself.
    constexpr int mostFailures = 10;
    int failures = 0;
    bool isDone = false;
    while (!isDone) {
        if (!startRecording()) ++failures;
        isDone = start_.modify([&](Start& start) {
            const bool goesOn = start == Start::wantedAgain && failures < mostFailures;
            start = goesOn ? Start::underWay : Start::none;
            return !goesOn;
        });
    }
}

bool Tallyfoot::Implementation::startRecording() try {
    const auto context = pipeline.context();
    if (!context->appInfo || !authenticationHandler_.copy()) return true;
    if (context->recorder) {
        switchIfOther(*context->recorder);
        return true;
    }
    const auto configuration = Tallyfoot::shared().uploadConfiguration();
    if (!configuration) return false;
    // The recorder asks for the closure of the last configure: an earlier one may refer to what is gone.
    const auto handler = [this] { return (*authenticationHandler_.copy())(); };
    const auto recorder =
        EventRecorder::make(defaultPlatformServices(), processSettings(), configuration, context->appInfo, handler);
    // Another application may have been set while the closure was asked: no event of it goes to the former one.
    for (bool isInPlace = false; !isInPlace;) {
        switchIfOther(*recorder);
        pipeline.changeContext([&](EventPipeline::Context& current) {
            isInPlace = !current.appInfo || current.appInfo->appName() == recorder->appInfo()->appName();
            if (isInPlace) current.recorder = recorder;
        });
    }
    return true;
} catch (...) { // the host's closure threw, or memory ran out: the next update tries again
    return false;
}

void Tallyfoot::Implementation::switchIfOther(EventRecorder& recorder) {
    const auto former = recorder.appInfo(); // both released after the lock: how a record goes is the host's business
    std::shared_ptr<ApplicationInfo> latest;
    MutexLock lock(switching_);
    latest = pipeline.context()->appInfo;
    if (latest && recorder.appInfo()->appName() != latest->appName()) recorder.switchApplication(latest);
}

} // namespace tallyfoot
