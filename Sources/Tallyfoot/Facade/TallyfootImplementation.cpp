#include "Tallyfoot/Facade/TallyfootImplementation.h"

#include "Tallyfoot/Recording/EventRecorder.h"

#include <utility>

namespace tallyfoot {

Tallyfoot::Implementation::Implementation() : pipeline(defaultPlatformServices(), processSettings()) {}

void Tallyfoot::Implementation::setSeams(Seams seams) {
    pipeline.changeContext(
        [&](EventPipeline::Context& context) { context.currentScreenTitle = seams.currentScreenTitle; });
    seams_.exchange(std::move(seams));
}

void Tallyfoot::Implementation::configure(std::shared_ptr<UploadConfiguration> configuration,
                                          const std::vector<std::string>& ignoreClasses,
                                          AuthenticationClosure authenticationClosure) {
    std::vector<ITFClass> ignored;
    for (const auto& name : ignoreClasses)
        if (const auto itfClass = fromRawValue<ITFClass>(name)) ignored.push_back(*itfClass);

    authenticationHandler_.exchange(
        authenticationClosure ? std::make_shared<const AuthenticationClosure>(std::move(authenticationClosure))
                              : nullptr);
    processSettings().uploadConfiguration.exchange(std::move(configuration));
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
    appInfo.exchange(info);
    pipeline.changeContext([&](EventPipeline::Context& context) { context.appInfo = std::move(info); });
    updateApplicationInfo();
}

void Tallyfoot::Implementation::installInterceptionsOnce() {
    if (!isSwizzled.exchange(true)) seams_.copy().installInterceptions();
}

void Tallyfoot::Implementation::updateApplicationInfo() {
    const bool isOurs = update_.modify([](Update& update) {
        const bool isFree = update == Update::none;
        update = isFree ? Update::underWay : Update::wantedAgain;
        return isFree;
    });
    if (!isOurs) return;
    const auto isDone = [this] {
        return update_.modify([](Update& update) {
            update = update == Update::wantedAgain ? Update::underWay : Update::none;
            return update == Update::none;
        });
    };
    try {
        do bringRecorderUpToDate();
        while (!isDone());
    } catch (...) { // the host's closure threw, or memory ran out: the next update tries again
        update_.exchange(Update::none);
    }
}

void Tallyfoot::Implementation::bringRecorderUpToDate() {
    const auto info = appInfo.copy();
    if (!info || !authenticationHandler_.copy()) return;
    if (const auto recorder = pipeline.context()->recorder) {
        if (recorder->appInfo()->appName() != info->appName()) recorder->switchApplication(info);
        return;
    }
    // The recorder asks for the closure of the last configure: an earlier one may refer to what is gone.
    const auto handler = [this]() -> std::shared_ptr<Authentication> {
        const auto closure = authenticationHandler_.copy();
        return closure ? (*closure)() : nullptr;
    };
    auto recorder = EventRecorder::make(defaultPlatformServices(), processSettings(),
                                        Tallyfoot::shared().uploadConfiguration(), info, handler);
    pipeline.changeContext([&](EventPipeline::Context& context) { context.recorder = std::move(recorder); });
}

} // namespace tallyfoot
