#pragma once

#include "Tallyfoot/Platform/Bundle.h"
#include "Tallyfoot/Platform/NetworkInterfaces.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/ProcessInfo.h"
#include "Tallyfoot/Platform/Screen.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// A device of the test's choice: what it says is what the test put in.
struct PlatformFacts {
    std::map<std::string, std::string, std::less<>> information{};
    std::map<std::string, std::string> environment{};
    OperatingSystemVersion version{17, 0, 0};
    std::string machine = "iPhone14,2";
    ScreenBounds bounds{390, 844};
    std::vector<InterfaceAddress> addresses{};

    PlatformServices services() const {
        PlatformServices services;
        services.bundles = std::make_shared<MainBundle>(*this);
        services.processInfo = std::make_shared<Process>(*this);
        services.screen = std::make_shared<MainScreen>(*this);
        services.networkInterfaces = std::make_shared<Interfaces>(*this);
        return services;
    }

private:
    struct MainBundle final : Bundles, Bundle {
        explicit MainBundle(const PlatformFacts& given) : facts(given) {}
        const Bundle& mainBundle() const override { return *this; }
        std::vector<std::shared_ptr<const Bundle>> allFrameworks() const override { return {}; }
        std::optional<std::string> information(std::string_view key) const override {
            const auto entry = facts.information.find(key);
            return entry == facts.information.end() ? std::nullopt : std::optional(entry->second);
        }
        std::optional<std::string> pathForResource(std::string_view, std::string_view) const override { return {}; }
        const PlatformFacts& facts;
    };
    struct Process final : ProcessInfo {
        explicit Process(const PlatformFacts& given) : facts(given) {}
        std::optional<std::string> environment(const std::string& name) const override {
            const auto entry = facts.environment.find(name);
            return entry == facts.environment.end() ? std::nullopt : std::optional(entry->second);
        }
        OperatingSystemVersion operatingSystemVersion() const override { return facts.version; }
        std::string machine() const override { return facts.machine; }
        const PlatformFacts& facts;
    };
    struct MainScreen final : Screen {
        explicit MainScreen(const PlatformFacts& given) : facts(given) {}
        ScreenBounds bounds() const override { return facts.bounds; }
        void setBounds(ScreenBounds) override {}
        const PlatformFacts& facts;
    };
    struct Interfaces final : NetworkInterfaces {
        explicit Interfaces(const PlatformFacts& given) : facts(given) {}
        std::vector<InterfaceAddress> addresses() const override { return facts.addresses; }
        const PlatformFacts& facts;
    };
};

} // namespace tallyfoot::testing
