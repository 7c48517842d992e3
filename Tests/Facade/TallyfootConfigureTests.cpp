#include "Facade/TallyfootTest.h"
#include "Support/ScriptedServer.h"

#include "Tallyfoot/Facade/TallyfootImplementation.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// Settings, applications, interceptions, and the closure that is asked for the credentials.
namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

TEST(TallyfootSettings, StartAsAHostExpectsThem) {
    EXPECT_TRUE(Tallyfoot::isEnabled());
    EXPECT_TRUE(Tallyfoot::showOutput());
    EXPECT_TRUE(Tallyfoot::consoleOutput());
    EXPECT_FALSE(Tallyfoot::isSwizzled());
    EXPECT_FALSE(Tallyfoot::ignoreFileSizeThreshold());
    EXPECT_EQ(Tallyfoot::pageParent(), std::nullopt);
    EXPECT_EQ(Tallyfoot::appInfo(), nullptr);
    EXPECT_THAT(Tallyfoot::categoryCustomTitles(), IsEmpty());
    EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), IsEmpty());
    EXPECT_THAT(Tallyfoot::shared().logs(), IsEmpty());
}

TEST_F(TallyfootTest, TheApplicationBeforeConfigureStartsNothingAndConfigureDoes) {
    setApplication("Shop");
    Tallyfoot::log("lost", {});
    EXPECT_EQ(authenticationsAsked_, 0);
    configure();
    EXPECT_EQ(authenticationsAsked_, 1);
    Tallyfoot::log("kept", {});
    ASSERT_THAT(records(), SizeIs(1));
    EXPECT_EQ(records()[0]["evtType"], "kept");
}

TEST_F(TallyfootTest, ConfigureBeforeTheApplicationStartsWithTheApplication) {
    configure();
    Tallyfoot::log("lost", {});
    EXPECT_EQ(authenticationsAsked_, 0);
    setApplication("Shop");
    Tallyfoot::log("kept", {});
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(TallyfootTest, TheSameApplicationNameAgainChangesNothing) {
    start();
    Tallyfoot::log("a", {});
    Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>("Shop", "another id", "x", "y"));
    Tallyfoot::log("b", {});
    EXPECT_THAT(records(), SizeIs(2));
    EXPECT_EQ(authenticationsAsked_, 1);
}

TEST_F(TallyfootTest, TheSameApplicationNameAgainUploadsNoOldApplication) {
    start();
    Tallyfoot::log("a", {});
    setApplication("Bank");
    ::testing::internal::CaptureStdout();
    Tallyfoot::setShowOutput(true);
    setApplication("Bank");
    const auto quiet = ::testing::internal::GetCapturedStdout();
    ::testing::internal::CaptureStdout();
    setApplication("Cafe");
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("calling upload for old app Shop"));
    EXPECT_THAT(quiet, Not(HasSubstr("calling upload for old app")));
}

TEST_F(TallyfootTest, AnotherApplicationNameSwitches) {
    start();
    Tallyfoot::log("a", {});
    setApplication("Bank");
    Tallyfoot::log("b", {});
    EXPECT_THAT(records("Shop"), IsEmpty());
    ASSERT_THAT(records("Bank"), SizeIs(1));
    EXPECT_EQ(records("Bank")[0]["evtType"], "b");
}

TEST_F(TallyfootTest, ConfigureAgainKeepsTheRecordingAndReplacesTheIgnoredClasses) {
    start({"UISlider"});
    configure({"UIButton"});
    EXPECT_EQ(authenticationsAsked_, 1);
    Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "UISlider"}});
    Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "UIButton"}});
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(TallyfootTest, InterceptionsAreInstalledOnceByWhateverComesFirst) {
    int installed = 0;
    Tallyfoot::Implementation::shared().setSeams({.installInterceptions = [&] { ++installed; }});
    EXPECT_FALSE(Tallyfoot::isSwizzled());
    Tallyfoot::modifyEnvironment([](Environment& environment) { environment.setUploadPath("x"); });
    EXPECT_TRUE(Tallyfoot::isSwizzled());
    Tallyfoot::setEnvironment(std::make_shared<Environment>());
    Tallyfoot::configureSwizzle();
    start();
    EXPECT_EQ(installed, 1);
}

TEST_F(TallyfootTest, WhoSaysThatTheInterceptionsAreInstalledInstallsThem) {
    int installed = 0;
    Tallyfoot::Implementation::shared().setSeams({.installInterceptions = [&] { ++installed; }});
    Tallyfoot::setIsSwizzled(true);
    start();
    EXPECT_EQ(installed, 0);
    Tallyfoot::setIsSwizzled(false);
    configure();
    EXPECT_EQ(installed, 1);
}

TEST_F(TallyfootTest, InterceptionsFollowAChangeOfTheEnvironmentThatThrows) {
    Tallyfoot::modifyEnvironment([](Environment&) { throw std::runtime_error("host"); });
    EXPECT_TRUE(Tallyfoot::isSwizzled());
}

TEST_F(TallyfootTest, ConfigureStartsTheRecordingThenInstallsThenIgnores) {
    std::vector<std::string> order;
    Tallyfoot::Implementation::shared().setSeams({.installInterceptions = [&] { order.emplace_back("interceptions"); },
                                                  .installCrashHooks =
                                                      [&] {
                                                          order.emplace_back("crash hooks");
                                                          EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), IsEmpty());
                                                      }});
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {"UISlider"}, [&] {
        order.emplace_back("closure");
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    EXPECT_THAT(order, ElementsAre("closure", "interceptions", "crash hooks"));
    EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), ElementsAre("UISlider"));
}

TEST_F(TallyfootTest, CrashHooksAreInstalledAtEveryConfigure) {
    int installed = 0;
    Tallyfoot::Implementation::shared().setSeams({.installCrashHooks = [&] { ++installed; }});
    start();
    configure();
    EXPECT_EQ(installed, 2);
}

TEST_F(TallyfootTest, InterceptionsFollowTheEnvironmentThatIsSet) {
    std::shared_ptr<Environment> found;
    Tallyfoot::Implementation::shared().setSeams({.installInterceptions = [&] { found = Tallyfoot::environment(); }});
    const auto environment = std::make_shared<Environment>();
    Tallyfoot::setEnvironment(environment);
    EXPECT_EQ(found, environment);
}

TEST_F(TallyfootTest, TheEnvironmentIsMadeOnFirstAccessAndIsTheSameAgain) {
    const auto environment = Tallyfoot::environment();
    ASSERT_TRUE(environment);
    EXPECT_EQ(environment, Tallyfoot::environment());
    EXPECT_EQ(environment->uploadPath(), "no such path");
}

TEST_F(TallyfootTest, AnEnvironmentTakenBackIsReplacedByADefaultOne) {
    Tallyfoot::setEnvironment(nullptr);
    ASSERT_TRUE(Tallyfoot::environment());
    EXPECT_EQ(Tallyfoot::environment()->uploadPath(), "no such path");
}

TEST_F(TallyfootTest, TheSharedInstanceKeepsNoLogs) {
    start();
    Tallyfoot::log("a", {});
    EXPECT_EQ(&Tallyfoot::shared(), &Tallyfoot::shared());
    EXPECT_THAT(Tallyfoot::shared().logs(), IsEmpty());
}

TEST_F(TallyfootTest, TheTokenIsTheOneInUse) {
    start();
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, TheUploadConfigurationIsTheDefaultUntilConfigured) {
    EXPECT_EQ(Tallyfoot::shared().uploadConfiguration(), UploadConfiguration::defaultConfiguration());
    start();
    EXPECT_EQ(Tallyfoot::shared().uploadConfiguration(), configuration_);
}

TEST_F(TallyfootTest, NoConfigurationIsTheDefaultOne) {
    start();
    Tallyfoot::configure(nullptr, {}, nullptr);
    EXPECT_EQ(Tallyfoot::shared().uploadConfiguration(), UploadConfiguration::defaultConfiguration());
    EXPECT_EQ(processSettings().uploadConfiguration.copy(), UploadConfiguration::defaultConfiguration());
}

TEST_F(TallyfootTest, TheClosureMayUseTheLibrary) {
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {}, [] {
        Tallyfoot::log("from the closure", {});
        setApplication("Bank");
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    Tallyfoot::log("after", {});
    EXPECT_THAT(records("Bank"), SizeIs(1));
}

TEST_F(TallyfootTest, AClosureThatThrowsLeavesNoRecorderAndTheNextConfigureTriesAgain) {
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {},
                         []() -> std::shared_ptr<Authentication> { throw std::runtime_error("host"); });
    Tallyfoot::log("lost", {});
    configure();
    Tallyfoot::log("kept", {});
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(TallyfootTest, AClosureThatThrewIsAskedAgainWhenTheSameApplicationIsSetAgain) {
    int asked = 0;
    Tallyfoot::configure(configuration_, {}, [&] {
        if (++asked == 1) throw std::runtime_error("host");
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    const auto application = std::make_shared<ApplicationInfo>("Shop", "id", "area", "area-id");
    Tallyfoot::setAppInfo(application);
    Tallyfoot::setAppInfo(application);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, TheClosureOfTheLastConfigureIsAskedWhenTheServerRejectsTheToken) {
    ScriptedServer server;
    server.script({.answer = ScriptedServer::response(R"({"data":{"response":{"statusCode":"10000003"}}})")});
    configuration_->setUploadPath(server.url());
    start();
    const auto asked = std::make_shared<std::promise<void>>();
    Tallyfoot::configure(configuration_, {}, [asked] {
        asked->set_value();
        return std::make_shared<Authentication>("user-1", "token-2");
    });
    Tallyfoot::setIgnoreFileSizeThreshold(true); // the event below is sent
    Tallyfoot::log("a", {});
    EXPECT_EQ(asked->get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_TRUE(server.request(0).hasLine("cookie: token-1"));
    EXPECT_EQ(authenticationsAsked_, 1);
}

TEST_F(TallyfootTest, AClosureThatConfiguresAnotherAndThrowsGivesWayToThatOne) {
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {}, [this]() -> std::shared_ptr<Authentication> {
        configure();
        throw std::runtime_error("host");
    });
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, SeveralClosuresThatThrowOneAfterAnotherGiveWayToTheLast) {
    setApplication("Shop");
    const auto failing = [this](auto&& next) {
        return [this, next]() -> std::shared_ptr<Authentication> {
            Tallyfoot::configure(configuration_, {}, next);
            throw std::runtime_error("host");
        };
    };
    const auto last = [] { return std::make_shared<Authentication>("user-1", "token-1"); };
    Tallyfoot::configure(configuration_, {}, failing(failing(failing(last))));
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, AClosureThatConfiguresItselfAndThrowsIsGivenUp) {
    int asked = 0;
    Tallyfoot::AuthenticationClosure closure;
    closure = [&]() -> std::shared_ptr<Authentication> {
        ++asked;
        Tallyfoot::configure(configuration_, {}, closure);
        throw std::runtime_error("host");
    };
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {}, closure);
    EXPECT_LT(asked, 20);
    configure();
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, NoClosureLeavesTheFormerOne) {
    start();
    Tallyfoot::configure(configuration_, {}, nullptr);
    setApplication("Bank");
    Tallyfoot::log("a", {});
    EXPECT_THAT(records("Bank"), SizeIs(1));
}

TEST_F(TallyfootTest, AnApplicationSetWhileTheClosureIsAskedGetsTheFirstEvent) {
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {}, [] {
        std::thread([] { setApplication("Bank"); }).join();
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    Tallyfoot::log("a", {});
    EXPECT_THAT(records("Shop"), IsEmpty());
    EXPECT_THAT(records("Bank"), SizeIs(1));
}

TEST_F(TallyfootDeathTest, TheTokenBeforeTheRecordingIsFatal) {
    EXPECT_DEATH((void)Tallyfoot::shared().authenticationToken(), "authenticationToken");
    configure();
    EXPECT_DEATH((void)Tallyfoot::shared().authenticationToken(), "authenticationToken");
}

} // namespace
} // namespace tallyfoot::testing
