#include "Tallyfoot/Facade/CaptureConnection.h"

#include "Tallyfoot/Facade/TallyfootImplementation.h"

#include <atomic>

namespace tallyfoot {

namespace {

// The facade as capture knows it; made on its first use, when something is to be recorded.
class ConnectedFacade final : public CaptureFacade {
public:
    void log(EventType type, Attributes& attributes) override { facade().pipeline.log(type, attributes, std::nullopt); }
    std::string category(ITFClass itfClass) const override {
        return facade().categoryCustomTitles.read(
            [&](const CategoryTitles& titles) { return tallyfoot::category(itfClass, titles); });
    }
    bool isIgnored(std::string_view category) const override {
        return facade().pipeline.context()->ignoreClasses.contains(category);
    }
    void setCurrentScreenTitle(std::string_view title) override { facade().pipeline.setCurrentScreenTitle(title); }
    void setScreenSize(ScreenBounds bounds) override { Tallyfoot::setScreenSize(bounds.width, bounds.height); }
    const DebugConsole& console() const override {
        static const auto& console =
            *new DebugConsole(*defaultPlatformServices().console, processSettings().showOutput);
        return console;
    }
    const Clock& clock() const override { return *defaultPlatformServices().clock; }

private:
    static Tallyfoot::Implementation& facade() { return Tallyfoot::Implementation::shared(); }
};

constinit std::atomic<Capture*> connectedCapture = nullptr;

Capture& connect(const CaptureBinding& binding) {
    auto* const capture = new Capture(binding, *new ConnectedFacade);
    connectedCapture = capture;
    return *capture;
}

} // namespace

Capture& connectCapture(const CaptureBinding& binding) {
    static Capture& capture = connect(binding); // never released: a host's objects live until the process ends
    return capture;
}

void installConnectedCapture() {
    if (auto* const capture = connectedCapture.load()) capture->configureSwizzle();
}

} // namespace tallyfoot
