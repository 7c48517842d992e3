#include "Tallyfoot/Facade/Configuration/Settings.h"

#include <utility>

namespace tallyfoot {

std::shared_ptr<Environment> Settings::environment() {
    if (auto current = environment_.copy()) return current;
    auto fresh = std::make_shared<Environment>(); // outside the lock: it asks the platform
    return environment_.modify([&](std::shared_ptr<Environment>& current) {
        if (!current) current = std::move(fresh);
        return current;
    });
}

void Settings::setEnvironment(std::shared_ptr<Environment> environment) {
    environment_.exchange(std::move(environment));
}

Settings& processSettings() {
    static auto& settings = *new Settings;
    return settings;
}

} // namespace tallyfoot
