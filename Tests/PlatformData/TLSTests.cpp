#include "PlatformData/SessionHost.h"
#include "PlatformData/TLSServer.h"

#include <gtest/gtest.h>

#include <cstdlib>

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

} // namespace
} // namespace tallyfoot::testing
