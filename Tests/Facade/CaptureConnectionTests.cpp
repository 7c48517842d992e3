#include "Support/MemoryBinding.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Facade/CaptureConnection.h"
#include "Tallyfoot/Facade/TallyfootImplementation.h"
#include "Tallyfoot/Tallyfoot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tallyfoot::testing {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// A host with a screen and a button, and a binding connected to the facade.
class CaptureConnectionTest : public ::testing::Test {
protected:
    CaptureConnectionTest() {
        ::setenv("XDG_DATA_HOME", (root_ / "data").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
        ::setenv("TALLYFOOT_MAIN_BUNDLE", (root_ / "bundle").c_str(), 1);
        Tallyfoot::setShowOutput(false);
        for (const auto& [name, superclass] :
             std::vector<std::pair<const char*, const char*>>{{"UIView", "NSObject"},
                                                              {"UIButton", "UIView"},
                                                              {"UIViewController", "NSObject"},
                                                              {"UIApplication", "NSObject"}})
            runtime_.addClass(name, superclass);
        const auto nothing = [](const auto&) { return MemoryRuntime::Value(true); };
        runtime_.addMethod("UIViewController", "viewWillAppear:", nothing);
        runtime_.addMethod("UIViewController", "viewWillDisappear:", nothing);
        runtime_.addMethod("UIApplication", "sendAction:to:from:forEvent:", nothing);
        binding_.connect(capture_);
        application_ = runtime_.make("UIApplication");
        button_ = runtime_.make("UIButton");
        runtime_.answer(button_, "currentTitle", std::string("Buy"));
        screen_ = runtime_.make("UIViewController");
        runtime_.answer(screen_, "title", std::string("Basket"));
    }

    void start(const std::vector<std::string>& ignoreClasses = {}) {
        const auto configuration = std::make_shared<UploadConfiguration>(3600, 1000000);
        configuration->setUploadPath("http://127.0.0.1:1/upload"); // nobody listens there
        Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>("Shop", "id", "area", "area-id"));
        Tallyfoot::configure(configuration, ignoreClasses,
                             [] { return std::make_shared<Authentication>("user-1", "token-1"); });
    }
    void tap() {
        runtime_.send(application_, "sendAction:to:from:forEvent:",
                      {runtime_.sel_registerName("buy:"), ObjectRef{}, button_, ObjectRef{}});
    }
    std::vector<json> records() const {
        std::vector<json> parsed;
        for (const auto& file : std::filesystem::directory_iterator(root_ / "data/Tallyfoot/Shop/Events")) {
            const auto text = readFile(file.path());
            for (std::size_t begin = 0; begin < text.size();) {
                const auto end = text.find("jsonsplit", begin);
                parsed.push_back(json::parse(text.substr(begin, end - begin)));
                begin = end + 9;
            }
        }
        return parsed;
    }

    TemporaryFolder root_;
    MemoryRuntime runtime_;
    MemoryBinding binding_{runtime_};
    Capture& capture_ = connectCapture(binding_.references());
    ObjectRef application_;
    ObjectRef button_;
    ObjectRef screen_;
};

TEST_F(CaptureConnectionTest, ATapIsOnDiskWhenItHasBeenDelivered) {
    start();
    tap();
    ASSERT_THAT(records(), SizeIs(1));
    const auto record = records()[0];
    EXPECT_EQ(record["evtType"], "action");
    EXPECT_EQ(record["evtCategory"], "UIButton");
    EXPECT_EQ(record["evtAction"], "tap");
    EXPECT_EQ(record["evtLabel"], "Buy");
    EXPECT_EQ(record["pgName"], "");
    EXPECT_EQ(record.size(), 8U);
}

TEST_F(CaptureConnectionTest, NothingIsCapturedUntilTheFacadeSaysSo) {
    capture_.prepare();
    tap();
    EXPECT_FALSE(Tallyfoot::isSwizzled());
    start();
    EXPECT_TRUE(Tallyfoot::isSwizzled());
    EXPECT_THAT(records(), IsEmpty());
}

TEST_F(CaptureConnectionTest, TheFacadeInstallsOnceWhateverIsCalledAgain) {
    Tallyfoot::configureSwizzle();
    const auto before = runtime_.ownMethods();
    start();
    Tallyfoot::configureSwizzle();
    Tallyfoot::setIsSwizzled(false);
    Tallyfoot::configureSwizzle();
    EXPECT_EQ(runtime_.ownMethods(), before) << "exchanged once more they would be as they were";
    tap();
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(CaptureConnectionTest, EventsCarryTheCurrentScreensTitle) {
    start();
    runtime_.send(screen_, "viewWillAppear:", {true});
    tap();
    Tallyfoot::log("purchase", {});
    runtime_.send(screen_, "viewWillDisappear:", {true});
    const auto all = records();
    ASSERT_THAT(all, SizeIs(3));
    EXPECT_EQ(all[0]["pgName"], "Basket");
    EXPECT_EQ(all[1]["pgName"], "Basket");
    EXPECT_EQ(all[2]["evtType"], "screen");
    EXPECT_EQ(all[2]["pgName"], "Basket");
    EXPECT_EQ(all[2]["evtLabel"], "Basket");
    EXPECT_EQ(all[2]["evtCategory"], "UIViewController");
    EXPECT_TRUE(all[2].contains("tmspent"));
}

TEST_F(CaptureConnectionTest, IgnoredClassesAreNotRecordedByTheirTitles) {
    Tallyfoot::categoryCustomTitles({{"UIButton", "Btn"}, {"UIViewController", "Page"}});
    start({"UIButton"});
    tap();
    EXPECT_THAT(records(), IsEmpty());
    Tallyfoot::categoryCustomTitles({{"UIButton", "Other"}});
    tap();
    ASSERT_THAT(records(), SizeIs(1)) << "the set was made of the former titles";
    EXPECT_EQ(records()[0]["evtCategory"], "Other");
}

TEST_F(CaptureConnectionTest, ScreensAreCountedOnTheConsole) {
    start();
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    runtime_.send(screen_, "viewWillAppear:", {true});
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "\"active screen: \"\n1\n");
    Tallyfoot::setShowOutput(false);
}

TEST_F(CaptureConnectionTest, ConnectingAgainGivesTheSameCapture) {
    EXPECT_EQ(&connectCapture(binding_.references()), &capture_);
}

TEST(WithoutABinding, ConfigureSwizzleFindsNothingToInstall) {
    Tallyfoot::setShowOutput(false);
    Tallyfoot::configureSwizzle();
    EXPECT_TRUE(Tallyfoot::isSwizzled());
    Tallyfoot::log("purchase", {});
}

} // namespace
} // namespace tallyfoot::testing
