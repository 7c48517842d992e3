#pragma once

#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/PropertyList.h"
#include "Tallyfoot/Tallyfoot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallyfoot::testing {

inline constexpr int aborted = 128 + SIGABRT; // how an uncaught exception ends a process

// One device. A host crashes there in a process of its own; then the test's process is the next start.
class CrashTest : public ::testing::Test {
protected:
    CrashTest();

    void start(); // the application, then configure
    void configure(const std::vector<std::string>& ignoreClasses = {});
    static void setApplication();

    // In a child process that has started: the crash. True when it ended with this status; a number
    // beyond 128 is 128 and the signal that ended it. What it wrote to standard error is in `message`.
    ::testing::AssertionResult crashes(int status, const std::function<void()>& crash);
    ::testing::AssertionResult endsWith(int status, const std::function<void()>& whole); // without the start
    std::string message;

    // What is stored for the next start.
    std::optional<PropertyList> stored() const;
    std::string storedReason() const; // "nothing" where nothing is

    std::vector<nlohmann::json> records() const; // of events that are on disk
    std::vector<nlohmann::json> crashRecords() const;
    // Starts, and gives the reasons of the crashes that this has told.
    std::vector<std::string> told();

    TemporaryFolder root_;
    std::shared_ptr<UploadConfiguration> configuration_;
};

} // namespace tallyfoot::testing
