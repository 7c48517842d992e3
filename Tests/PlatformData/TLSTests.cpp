#include "PlatformData/SessionHost.h"
#include "PlatformData/TLSServer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>

namespace tallyfoot::testing {
namespace {

class TLSTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!TLSServer::isAvailable()) GTEST_SKIP() << "the openssl command is missing";
    }

    static URLRequest get(const std::string& url) {
        URLRequest request;
        request.url = url;
        return request;
    }

    SessionHost host;
};

TEST_F(TLSTest, ACertificateThatNobodyKnowsIsRefused) {
    const TLSServer server;
    ::unsetenv("SSL_CERT_FILE");
    expectError(host.fetch(get(server.url())), "certificate");
}

TEST_F(TLSTest, ACertificateThatTheEnvironmentTrustsIsTaken) {
    const TLSServer server;
    ::setenv("SSL_CERT_FILE", server.certificatePath().c_str(), 1);
    const auto answer = host.fetch(get(server.url()));
    EXPECT_TRUE(answer) << answer.error().description;
}

TEST_F(TLSTest, ACertificateForAnotherHostIsRefused) {
    const TLSServer server("DNS:uploads.example");
    ::setenv("SSL_CERT_FILE", server.certificatePath().c_str(), 1);
    expectError(host.fetch(get(server.url())), "127.0.0.1");
}

// Starts itself anew for ever.
void keepAsking(PosixURLSession& session, const URLRequest& request, std::promise<void>* answered) {
    session.dataTask(request, [&session, request, answered](const Result<std::string>& result) {
        if (answered != nullptr && result) answered->set_value();
        keepAsking(session, request, answered != nullptr && !result ? answered : nullptr);
    });
}

using TLSDeathTest = TLSTest;

TEST_F(TLSDeathTest, TheProcessEndsInTheMiddleOfTransfers) {
    const TLSServer server;
    ::setenv("SSL_CERT_FILE", server.certificatePath().c_str(), 1);
    // No thread runs yet: the child may be a plain fork, which leaves the server to this process.
    GTEST_FLAG_SET(death_test_style, "fast");
    EXPECT_EXIT(
        {
            static auto& session = *new PosixURLSession;
            static std::promise<void> answered;
            keepAsking(session, get(server.url()), &answered);
            for (int other = 0; other < 5; ++other) keepAsking(session, get(server.url()), nullptr);
            answered.get_future().wait();
            std::exit(7);
        },
        ::testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace tallyfoot::testing
