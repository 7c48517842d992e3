#include "Recording/RecorderHost.h"
#include "Recording/SteppedDispatch.h"

#include "Tallyfoot/Platform/UserDefaults.h"
#include "Tallyfoot/Recording/StoreKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

// Servers that reject the credentials, and users who have changed.
namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

class AuthenticationRejection : public ::testing::TestWithParam<std::string> {};

TEST_P(AuthenticationRejection, RestoresEverythingAndAsksForFreshCredentials) {
    RecorderHost host;
    host.start();
    host.log();
    host.recorder->triggerUpload();
    const auto sent = host.files("Upload");
    host.settle();
    host.token = "token-2";
    host.server->answerWith(GetParam(), sent, {}); // which a rejection cannot have delivered
    EXPECT_EQ(host.authenticationsAsked, 2);
    EXPECT_THAT(host.files("Upload"), SizeIs(1));
    host.trigger();
    EXPECT_EQ(field(host.server->requests().back(), "authtoken"), "token-2");
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
}

TEST_P(AuthenticationRejection, OfAUserWhoHasChangedDeletesEverything) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.userId = "user-2";
    host.server->answerWith(GetParam());
    EXPECT_THAT(host.files("Upload"), IsEmpty());
    EXPECT_THAT(host.files("Backup"), IsEmpty());
    host.log();
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("2"));
}

INSTANTIATE_TEST_SUITE_P(Codes, AuthenticationRejection, ::testing::Values("10000002", "10000003", "10000008"));

TEST(EventRecorder, AChangedUserLosesAllLocalLogsOfTheFolder) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.log(); // in Events
    host.userId = "user-2";
    host.server->answerWith("10000003");
    EXPECT_THAT(host.files("Events"), IsEmpty());
    EXPECT_THAT(host.files("Upload"), IsEmpty());
    EXPECT_THAT(host.files("Backup"), IsEmpty());
    EXPECT_EQ(*host.services.userDefaults->object(storekeys::user)->as<std::string>(), "user-2");
    host.log();
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("3"));
    EXPECT_EQ(field(host.server->requests().back(), "userId"), "user-2");
}

TEST(EventRecorder, AUserWhoseNameIsNoUTF8IsTheSameOneAfterARejection) {
    RecorderHost host;
    for (const std::string name : {"J\xFCrgen", "\xE2\x82", "\xED\xA0\x80"}) {
        host.userId = name;
        host.start();
        host.log();
        host.trigger();
        host.server->answerWith("10000003");
        EXPECT_THAT(host.files("Upload"), Not(IsEmpty())) << "taken for another user";
    }
}

TEST(EventRecorder, WithoutAStoredUserNobodyHasChanged) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.services.userDefaults->remove(storekeys::user);
    host.userId = "user-2";
    host.server->answerWith("10000003");
    EXPECT_THAT(host.files("Upload"), SizeIs(1));
    EXPECT_EQ(*host.services.userDefaults->object(storekeys::user)->as<std::string>(), "user-2");
}

TEST(EventRecorder, AClosureThatThrowsAtARejectionLeavesTheFormerCredentials) {
    RecorderHost host;
    bool throws = false;
    host.start([&] {
        if (throws) throw std::runtime_error("no network");
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    host.log();
    host.trigger();
    throws = true;
    host.server->answerWith("10000003");
    EXPECT_EQ(host.recorder->authenticationInfo()->authenticationToken(), "token-1");
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
    EXPECT_EQ(field(host.server->requests().back(), "authtoken"), "token-1");
}

TEST(EventRecorder, AChangedUserLeavesTheLogsOfOtherApplications) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.switchTo("Bank");
    host.settle();
    host.log();
    host.userId = "user-2";
    host.server->answerWith("10000003"); // to Shop's archive
    EXPECT_THAT(host.files("Shop", "Upload"), IsEmpty());
    ASSERT_THAT(host.files("Bank", "Events"), SizeIs(1));
    EXPECT_THAT(events(readFile(host.folder("Bank", "Events") / host.files("Bank", "Events")[0])), ElementsAre("2"));
}

TEST(EventRecorder, NoUploadTakesANewUsersTokenWhileTheFormerUsersLogsAreThere) {
    RecorderHost host;
    const auto dispatch = std::make_shared<SteppedDispatch>(host.dispatch);
    host.services.dispatch = dispatch;
    host.start();
    host.log();
    host.trigger();
    host.recorder->triggerUpload(); // its upload runs after the closure, before the logs are deleted
    dispatch->beforeTurn = [&] {
        if (host.authenticationsAsked == 2) host.settle();
    };
    host.userId = "user-2";
    host.token = "token-2";
    host.server->answerWith("10000003");
    dispatch->beforeTurn = nullptr;
    ASSERT_THAT(host.server->requests(), SizeIs(2));
    EXPECT_EQ(field(host.server->requests().back(), "userId"), "user-1");
    EXPECT_EQ(field(host.server->requests().back(), "authtoken"), "token-1");
}

TEST(EventRecorder, AUserWhoChangedBetweenTwoRunsIsNotNoticed) {
    RecorderHost host;
    host.start();
    host.log();
    host.stop();
    host.userId = "user-2";
    host.start();
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().at(0)), ElementsAre("1"));
    EXPECT_EQ(field(host.server->requests().at(0), "userId"), "user-2");
}

TEST(EventRecorder, TheClosureMayLogAndSwitchTheApplicationWhileARejectionIsDealtWith) {
    RecorderHost host;
    host.start([&] {
        if (host.recorder) { // asked again
            host.log();
            host.switchTo("Bank");
            host.log();
            host.recorder->triggerUpload();
            host.log();
        }
        return std::make_shared<Authentication>(host.userId, host.token);
    });
    host.log();
    host.trigger();
    host.userId = "user-2";
    host.server->answerWith("10000003");
    EXPECT_THAT(host.files("Shop", "Events"), IsEmpty());
    EXPECT_THAT(host.files("Shop", "Upload"), IsEmpty());
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("3", "4"));
    EXPECT_EQ(field(host.server->requests().back(), "appName"), "Bank");
    EXPECT_THAT(host.knownApplications(), ElementsAre("Bank"));
}

using EventRecorderDeathTest = ::testing::Test;

TEST(EventRecorderDeathTest, AClosureThatReturnsNothingIsFatal) {
    RecorderHost host;
    EXPECT_DEATH(EventRecorder::make(host.services, host.settings, host.configuration, application("Shop"),
                                     [] { return std::shared_ptr<Authentication>(); }),
                 "authentication closure returned nothing");
}

TEST(EventRecorderDeathTest, AClosureThatReturnsNothingAtARejectionIsFatal) {
    RecorderHost host;
    host.start([&] { return host.recorder ? nullptr : std::make_shared<Authentication>("user-1", "token-1"); });
    host.log();
    host.trigger();
    EXPECT_DEATH(host.server->answerWith("10000003"), "authentication closure returned nothing");
}

TEST(EventRecorderDeathTest, AMissingClosureIsFatal) {
    RecorderHost host;
    EXPECT_DEATH(EventRecorder::make(host.services, host.settings, host.configuration, application("Shop"), nullptr),
                 "no authentication closure");
}

} // namespace
} // namespace tallyfoot::testing
