// A host with every kind of call in it. Its events are on disk when it ends; an upload follows once
// there are more than twenty or a minute has gone by.
#include <Tallyfoot/Tallyfoot.h>

#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

using namespace tallyfoot;

int main() {
    auto configuration = std::make_shared<UploadConfiguration>(60, 20); // seconds, events count
    configuration->setUploadPath("http://127.0.0.1:9090/upload");
    Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>("Shop", "shop-1", "Retail", "R-7"));
    Tallyfoot::configure(configuration, {"UISlider"}, [] {
        return std::make_shared<Authentication>("user-1", "token-1"); // optional third: userLogOnTime
    });
    Tallyfoot::log(EventType::action, {{LogAttribute::evtLabel, "Buy"}});
    Tallyfoot::log(EventType::action, {{LogAttribute::evtLabel, "Buy"}}, {{"sku", "A-1"}, {"quantity", 2}});
    Tallyfoot::log("purchase", {});
    Tallyfoot::logJSON(EventType::action, {}, R"({"a":1})");
    Tallyfoot::logJSON("purchase", {});
    Tallyfoot::logEvent("purchase", {{"pgName", "Basket"}}, {{"sku", "A-1"}});
    Tallyfoot::logEvent(EventType::screen, {{"pgName", "Basket"}});
    Tallyfoot::logJSONEvent("purchase", {{"pgName", "Basket"}}, "[]");
    Tallyfoot::categoryCustomTitles({{"UIButton", "Btn"}});
    Tallyfoot::setPageParent("web");
    Tallyfoot::setIsEnabled(true);
    Tallyfoot::setShowOutput(false);
    Tallyfoot::setIgnoreFileSizeThreshold(false);
    auto environment = std::make_shared<Environment>();
    environment->setEndpoint(Endpoint::uat);
    Tallyfoot::setEnvironment(environment);
    std::string token = Tallyfoot::shared().authenticationToken();
    std::optional<EventType> type = fromRawValue<EventType>("screen"); // also LogAttribute, ITFClass, Endpoint(int)
    std::string_view text = rawValue(LogAttribute::screenTitle);       // "pgName"

    std::cout << "token " << token << ", type " << (type == EventType::screen ? "screen" : "?") << ", key " << text
              << '\n';
    return 0;
}
