#include "Tallyfoot/Facade/CaptureConnection.h"

#include "Tallyfoot/Facade/TallyfootImplementation.h"

namespace tallyfoot {

namespace {

class ConnectedFacade final : public CaptureFacade {
public:
    explicit ConnectedFacade(Tallyfoot::Implementation& facade) : facade_(facade) {}

    void log(EventType type, Attributes& attributes) override { facade_.pipeline.log(type, attributes, std::nullopt); }
    std::string category(ITFClass itfClass) const override {
        return facade_.categoryCustomTitles.read(
            [&](const CategoryTitles& titles) { return tallyfoot::category(itfClass, titles); });
    }
    bool isIgnored(std::string_view category) const override {
        return facade_.pipeline.context()->ignoreClasses.contains(category);
    }
    const DebugConsole& console() const override { return console_; }
    const Clock& clock() const override { return *defaultPlatformServices().clock; }

private:
    Tallyfoot::Implementation& facade_;
    const DebugConsole console_{*defaultPlatformServices().console, processSettings().showOutput};
};

Capture& connect(const CaptureBinding& binding) {
    auto& facade = Tallyfoot::Implementation::shared();
    auto* const capture = new Capture(binding, *new ConnectedFacade(facade));
    facade.changeSeams([capture](Seams& seams) {
        seams.installInterceptions = [capture] { capture->configureSwizzle(); };
        seams.currentScreenTitle = [capture] { return capture->currentScreenTitle(); };
    });
    return *capture;
}

} // namespace

Capture& connectCapture(const CaptureBinding& binding) {
    static Capture& capture = connect(binding); // never released: a host's objects live until the process ends
    return capture;
}

} // namespace tallyfoot
