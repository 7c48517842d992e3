#include "Crash/CrashHost.h"
#include "Crash/Faults.h"
#include "Crash/Places.h"

#include "Tallyfoot/Facade/TallyfootImplementation.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/UserDefaults.h"

#include <time.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iomanip>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <thread>

// What the next start tells of a crash.
namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// --- What is told -------------------------------------------------------------------------------

TEST_F(CrashTest, TheEventCarriesTheMomentOfTheCrash) {
    const auto before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    ASSERT_TRUE(crashes(SIGABRT, [] {
        Tallyfoot::Implementation::shared().pipeline.setCurrentScreenTitle("Basket");
        Tallyfoot::setPageParent("web");
        Tallyfoot::log("a", {});
        std::abort();
    }));
    Tallyfoot::setPageParent("other");
    ASSERT_THAT(told(), SizeIs(1));
    const auto record = crashRecords()[0];
    EXPECT_EQ(record.size(), 7U);
    EXPECT_EQ(record["evtType"], "crash");
    EXPECT_EQ(record["evtCategory"], "crash");
    EXPECT_EQ(record["crashreason"], "SIGABRT");
    EXPECT_EQ(record["pgName"], "Basket");
    EXPECT_EQ(record["pgPrnt"], "web");
    EXPECT_TRUE(std::regex_match(record["evtId"].get<std::string>(),
                                 std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")));
    std::istringstream text(record["evtLclTimestamp"].get<std::string>());
    std::tm parts{};
    text >> std::get_time(&parts, "%Y-%m-%d %H:%M:%S +0000");
    ASSERT_TRUE(text);
    const auto time = std::chrono::system_clock::from_time_t(::timegm(&parts));
    EXPECT_GE(time, before);
    EXPECT_LE(time, std::chrono::system_clock::now());
}

TEST_F(CrashTest, WithoutPageParentAndScreenItIsTheAppItself) {
    ASSERT_TRUE(crashes(SIGABRT, [] {
        Tallyfoot::setPageParent("web");
        Tallyfoot::setPageParent(std::nullopt);
        std::abort();
    }));
    ASSERT_THAT(told(), SizeIs(1));
    EXPECT_EQ(crashRecords()[0]["pgPrnt"], "iOS");
    EXPECT_EQ(crashRecords()[0]["pgName"], "");
}

TEST_F(CrashTest, TextsOfAnyLengthAndCharacterAreKept) {
    const std::string parent = std::string(100'000, 'x') + "<&>\"'\n\t\xF0\x9F\x91\xA9";
    ASSERT_TRUE(crashes(SIGABRT, [&] {
        Tallyfoot::setPageParent(parent);
        std::abort();
    }));
    ASSERT_THAT(told(), SizeIs(1));
    EXPECT_EQ(crashRecords()[0]["pgPrnt"], parent);
}

TEST_F(CrashTest, ATextThatIsTooLongToBeReadBackKeepsItsBeginning) {
    ASSERT_TRUE(crashes(SIGABRT, [] {
        Tallyfoot::setPageParent(std::string(20'000'000, '&'));
        std::abort();
    }));
    ASSERT_THAT(told(), ElementsAre("SIGABRT"));
    const std::string kept = crashRecords()[0]["pgPrnt"];
    EXPECT_EQ(kept, std::string(kept.size(), '&'));
    EXPECT_GT(kept.size(), 400'000U);
}

TEST_F(CrashTest, EventsBeforeTheCrashAreThere) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        for (int event = 0; event < 100; ++event) Tallyfoot::log("a", {});
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(records(), SizeIs(100));
}

TEST_F(CrashTest, TheConsoleSaysWhatIsAdded) {
    ASSERT_TRUE(crashes(SIGABRT, [] { std::abort(); }));
    setApplication();
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::configure(configuration_, {}, [] { return std::make_shared<Authentication>("user-1", "token-1"); });
    const auto output = ::testing::internal::GetCapturedStdout();
    Tallyfoot::setShowOutput(false);
    EXPECT_THAT(output, HasSubstr(R"("evtType: crash")"));
    EXPECT_THAT(
        output,
        HasSubstr(R"("Adding crash: [\"crashreason\": \"SIGABRT\", \"evtCategory\": \"crash\", \"evtId\": \")"));
    EXPECT_LT(output.find("evtType: crash"), output.find("Adding crash: "));
}

// --- One record ---------------------------------------------------------------------------------

TEST_F(CrashTest, OfTwoBeforeARestartTheSecondIsLeft) {
    ASSERT_TRUE(crashes(SIGSEGV, [] { ::raise(SIGSEGV); }));
    // The next start crashes before it could tell.
    ASSERT_TRUE(endsWith(SIGFPE, [] {
        CrashContext context(*defaultPlatformServices().crashHooks);
        struct Silent final : CrashFacade {
            void log(EventType, Attributes&) override { ::raise(SIGFPE); }
            bool isIgnored(std::string_view) const override { return false; }
            const DebugConsole& console() const override { return quiet; }
            std::atomic<bool> isOn{false};
            DebugConsole quiet{*defaultPlatformServices().console, isOn};
        } facade;
        ExceptionHandler handler(defaultPlatformServices(), context, facade);
        handler.install();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGFPE"));
}

TEST_F(CrashTest, ARecordThatWasLoggedButNotClearedIsToldAgainUnderItsIdentifier) {
    ASSERT_TRUE(crashes(SIGSEGV, [] { ::raise(SIGSEGV); }));
    const auto record = stored();
    ASSERT_TRUE(crashes(0, [] {}));
    defaultPlatformServices().userDefaults->setObject("crash", *record); // as if the process had died there
    EXPECT_THAT(told(), ElementsAre("SIGSEGV", "SIGSEGV"));
    EXPECT_EQ(crashRecords()[0]["evtId"], crashRecords()[1]["evtId"]);
}

TEST_F(CrashTest, IgnoredIsClearedWithoutAnEvent) {
    Tallyfoot::categoryCustomTitles({{"UISlider", "crash"}});
    setApplication();
    configure({"UISlider"});
    defaultPlatformServices().userDefaults->setObject(
        "crash", PropertyList{PropertyList::Dictionary{{"crashreason", PropertyList{std::string("SIGSEGV")}}}});
    configure({"UISlider"});
    EXPECT_THAT(crashRecords(), IsEmpty());
    EXPECT_EQ(storedReason(), "nothing");
}

// --- Exceptions ---------------------------------------------------------------------------------

void throwError(const char* reason) { throw std::logic_error(reason); }

TEST_F(CrashTest, AnExceptionIsToldWithItsReasonAndEndsTheProcessAsUsual) {
    ASSERT_TRUE(crashes(aborted, [] { throw std::runtime_error("no shelf"); }));
    EXPECT_THAT(
        message,
        HasSubstr("terminate called after throwing an instance of 'std::runtime_error'\n  what():  no shelf\n"));
    EXPECT_THAT(told(), ElementsAre("no shelf"));
}

TEST_F(CrashTest, AnExceptionWithoutAReasonIsToldWithAnEmptyOne) {
    ASSERT_TRUE(crashes(aborted, [] { throw 7; }));
    EXPECT_THAT(message, HasSubstr("terminate called after throwing an instance of 'int'"));
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, AnExceptionWhoseReasonIsNullIsToldWithAnEmptyOne) {
    struct Silent : std::exception {
        const char* what() const noexcept override { return nullptr; }
    };
    (void)crashes(aborted, [] { throw Silent(); });
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, TerminateWithoutAnExceptionIsToldWithAnEmptyReason) {
    ASSERT_TRUE(crashes(aborted, [] { std::terminate(); }));
    EXPECT_THAT(message, HasSubstr("terminate called without an active exception"));
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, AThreadThatIsNeitherJoinedNorDetachedIsToldWithAnEmptyReason) {
    ASSERT_TRUE(crashes(aborted, [] { const std::thread thread(waitForTheEnd); }));
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, AnExceptionOfAThread) {
    ASSERT_TRUE(crashes(aborted, [] { std::thread([] { throw std::logic_error("of a thread"); }).join(); }));
    EXPECT_THAT(told(), ElementsAre("of a thread"));
}

TEST_F(CrashTest, AnExceptionFromADestructor) {
    struct Throwing {
        ~Throwing() { throwError("of a destructor"); }
    };
    ASSERT_TRUE(crashes(aborted, [] { const Throwing throwing; }));
    EXPECT_THAT(told(), ElementsAre("of a destructor"));
}

TEST_F(CrashTest, AnExceptionFromAFunctionThatIsNoexcept) {
    ASSERT_TRUE(crashes(aborted, [] { []() noexcept { throwError("let through"); }(); }));
    EXPECT_THAT(told(), ElementsAre("let through"));
}

TEST_F(CrashTest, AnExceptionWhileAnotherUnwinds) {
    struct Throwing {
        ~Throwing() noexcept(false) { throw std::logic_error("the second"); }
    };
    ASSERT_TRUE(crashes(aborted, [] {
        try {
            const Throwing throwing;
            throw std::logic_error("the first");
        } catch (const std::logic_error&) {
        }
    }));
    EXPECT_THAT(told(), ElementsAre("the second"));
}

TEST_F(CrashTest, AnExceptionOfTheLibrarysOwnThreads) {
    ASSERT_TRUE(crashes(aborted, [] { onRecorderQueue([] { throw std::runtime_error("of a queue"); }); }));
    EXPECT_THAT(told(), ElementsAre("of a queue"));
}

TEST_F(CrashTest, AReasonThatThrowsEndsAllTheSame) {
    struct Perverse : std::exception {
        const char* what() const noexcept override {
            throwError("no reason");
            return "";
        }
    };
    ASSERT_TRUE(crashes(aborted, [] { throw Perverse(); }));
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, AReasonThatCrashesIsToldAsTheSignal) {
    struct Broken : std::exception {
        const char* what() const noexcept override {
            writeToForbiddenMemory();
            return "";
        }
    };
    ASSERT_TRUE(crashes(SIGSEGV, [] { throw Broken(); }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, AReasonThatDoesNotComeIsToldAsAnEmptyOne) {
    struct Endless : std::exception {
        const char* what() const noexcept override { waitForTheEnd(); }
    };
    ASSERT_TRUE(crashes(aborted, [] { throw Endless(); }));
    EXPECT_THAT(told(), ElementsAre(""));
}

} // namespace
} // namespace tallyfoot::testing
