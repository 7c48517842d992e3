#pragma once

#include "PlatformData/SessionHost.h"
#include "Support/ScriptedServer.h"

#include <gtest/gtest.h>

namespace tallyfoot::testing {

// A session, and a server that does what the test has written down for it.
class PosixURLSessionTest : public ::testing::Test {
protected:
    ScriptedServer server;
    SessionHost host;
};

} // namespace tallyfoot::testing
