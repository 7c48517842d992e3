#pragma once

#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Tallyfoot.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// A host process of its own: every test runs in one, with its own folders.
class TallyfootTest : public ::testing::Test {
protected:
    TallyfootTest();

    void start(const std::vector<std::string>& ignoreClasses = {}); // the application, then configure
    void configure(const std::vector<std::string>& ignoreClasses = {});
    static void setApplication(const std::string& appName);

    // What is on disk of an application's events, and its records one by one.
    std::string stored(const std::string& appName = "Shop") const;
    std::vector<nlohmann::json> records(const std::string& appName = "Shop") const;

    TemporaryFolder root_;
    std::shared_ptr<UploadConfiguration> configuration_ = std::make_shared<UploadConfiguration>(3600, 1000000);
    int authenticationsAsked_ = 0;
};

using TallyfootDeathTest = TallyfootTest;

} // namespace tallyfoot::testing
