#include "ObjC/ObjCHost.h"

#include "Tallyfoot/Tallyfoot.h"

#include <gmock/gmock.h>
#include <objc/runtime.h>

#include <cerrno>
#include <cstdlib>
#include <future>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace tallyfoot::testing;
using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::SizeIs;

using ObjCTallyfoot = ObjCHost;

ApplicationInfo* application(NSString* name) {
    return [[[ApplicationInfo alloc] initWithAppName:name appId:@"i" bizArea:@"a" bizAreaId:@"b"] autorelease];
}

Authentication* user(NSString* token) {
    return [[[Authentication alloc] initWithUserId:@"user-1" authenticationToken:token userLogOnTime:nil] autorelease];
}

UploadConfiguration* configuration() {
    UploadConfiguration* made = [[[UploadConfiguration alloc] initWithSeconds:3600 eventsCount:1000000] autorelease];
    made.uploadPath = @"http://127.0.0.1:1/upload";
    return made;
}

TEST_F(ObjCTallyfoot, RecordsEveryFormOfAnEvent) {
    start();
    [Tallyfoot logEventWithType:@"purchase" attributes:@{@"pgName" : @"Basket"} customAttributes:@{@"sku" : @"A-1"}];
    [Tallyfoot logEvent:EventTypeScreen attributes:@{@"pgName" : @"Basket"} customAttributes:nil];
    [Tallyfoot logJSONEventWithType:@"purchase" attributes:@{} customJSONAttributes:nil];
    [Tallyfoot logJSONEvent:EventTypeAction attributes:@{} customJSONAttributes:@"{\"a\":1}"];

    const auto stored = records();
    ASSERT_THAT(stored, SizeIs(4));
    EXPECT_EQ(stored[0]["evtType"], "purchase");
    EXPECT_EQ(stored[0]["pgName"], "Basket");
    EXPECT_EQ(stored[0]["custom"], json::parse(R"([{"sku":"A-1"}])"));
    EXPECT_EQ(stored[1]["evtType"], "screen");
    EXPECT_FALSE(stored[1].contains("custom"));
    EXPECT_EQ(stored[2]["evtType"], "purchase");
    EXPECT_EQ(stored[3]["evtType"], "action");
    EXPECT_EQ(stored[3]["custom"], json::parse(R"([{"a":1}])"));
}

TEST_F(ObjCTallyfoot, DropsAttributesThatAreNoTextsAndKeepsTheEvent) {
    start();
    [Tallyfoot logEvent:EventTypeAction
              attributes:@{
                  @"evtLabel" : (id) @7,
                  @"pgName" : @"Basket",
                  @"x" : @"y"
              }
        customAttributes:nil];
    const auto stored = records();
    ASSERT_THAT(stored, SizeIs(1));
    EXPECT_FALSE(stored[0].contains("evtLabel"));
    EXPECT_FALSE(stored[0].contains("x"));
    EXPECT_EQ(stored[0]["pgName"], "Basket");
}

TEST_F(ObjCTallyfoot, DropsCustomDataThatJSONDoesNotKnowAndKeepsTheEvent) {
    start();
    [Tallyfoot logEventWithType:@"purchase" attributes:@{} customAttributes:@{@"at" : [NSDate date]}];
    const auto stored = records();
    ASSERT_THAT(stored, SizeIs(1));
    EXPECT_FALSE(stored[0].contains("custom"));
}

TEST_F(ObjCTallyfoot, TakesWhatMayNotBeNilForEmpty) {
    start();
    NSString* noText = nil;
    NSDictionary* none = nil;
    [Tallyfoot logEventWithType:noText attributes:none customAttributes:nil];
    [Tallyfoot logEvent:EventTypeAction attributes:none customAttributes:nil];
    const auto stored = records();
    ASSERT_THAT(stored, SizeIs(1));
    EXPECT_EQ(stored[0]["evtType"], "");
}

TEST_F(ObjCTallyfoot, RaisesNothingWhenAnArgumentRaises) {
    start();
    NSDictionary* raising = [[[RaisingDictionary alloc] init] autorelease];
    EXPECT_NO_FATAL_FAILURE([Tallyfoot logEvent:EventTypeAction attributes:raising customAttributes:nil]);
    EXPECT_NO_FATAL_FAILURE([Tallyfoot categoryCustomTitles:raising]);
    [Tallyfoot logEventWithType:@"purchase" attributes:@{} customAttributes:raising];
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(ObjCTallyfoot, KeepsAnEventOfWhichAPartRaises) {
    start();
    NSString* text = [[[RaisingText alloc] init] autorelease];
    NSDictionary* attributes = @{@"pgName" : text, @"evtLabel" : @"Buy"};
    [Tallyfoot logEventWithType:@"purchase" attributes:attributes customAttributes:nil];
    [Tallyfoot logEventWithType:text attributes:@{} customAttributes:nil];
    [Tallyfoot logJSONEventWithType:@"purchase" attributes:attributes customJSONAttributes:text];
    [Tallyfoot logEventWithType:@"purchase"
                     attributes:[[[RaisingDictionary alloc] init] autorelease]
               customAttributes:nil];
    const auto stored = records();
    ASSERT_THAT(stored, SizeIs(4));
    EXPECT_EQ(stored[0]["evtLabel"], "Buy");
    EXPECT_EQ(stored[0]["pgName"], "");
    EXPECT_EQ(stored[1]["evtType"], "");
    EXPECT_FALSE(stored[2].contains("custom"));
}

TEST_F(ObjCTallyfoot, IsConfiguredWithoutTheClassNameThatRaises) {
    NSArray* names = @[ [[[RaisingText alloc] init] autorelease], @"UISlider" ];
    Tallyfoot.appInfo = application(@"Shop");
    [Tallyfoot configure:configuration()
                ignoreClasses:names
        authenticationClosure:^{
          return user(@"t");
        }];
    EXPECT_THAT(tallyfoot::Tallyfoot::shared().ignoreClasses(), ElementsAre("UISlider"));
}

TEST_F(ObjCTallyfoot, TakesDictionariesOfTheHostsOwnClasses) {
    start();
    NSDictionary* own = [[[PlainDictionary alloc] initWithEntries:@{@"pgName" : @"Basket"}] autorelease];
    [Tallyfoot logEvent:EventTypeAction attributes:own customAttributes:own];
    const auto stored = records();
    ASSERT_THAT(stored, SizeIs(1));
    EXPECT_EQ(stored[0]["pgName"], "Basket");
    EXPECT_EQ(stored[0]["custom"], json::parse(R"([{"pgName":"Basket"}])"));
}

TEST_F(ObjCTallyfoot, LeavesErrnoAsItWas) {
    start();
    errno = EDOM;
    [Tallyfoot logEvent:EventTypeAction attributes:@{@"pgName" : @"Basket"} customAttributes:@{@"a" : @1}];
    EXPECT_EQ(errno, EDOM);
}

TEST_F(ObjCTallyfoot, IsFatalToLogANumberThatIsNoEventTypeWithoutAnEventTypeOfItsOwn) {
    start();
    const auto wrapped = static_cast<EventType>(4294967296 + 2);
    [Tallyfoot logEvent:wrapped attributes:@{@"evtType" : @"own"} customAttributes:nil];
    EXPECT_EQ(records().at(0)["evtType"], "own");
    EXPECT_DEATH([Tallyfoot logEvent:wrapped attributes:@{@"pgName" : @"x"} customAttributes:nil], "");
    EXPECT_DEATH([Tallyfoot logEvent:static_cast<EventType>(9) attributes:@{@"pgName" : @"x"} customAttributes:nil],
                 "");
}

TEST_F(ObjCTallyfoot, IgnoresCategoriesByTheirCustomTitles) {
    [Tallyfoot categoryCustomTitles:@{@"UIButton" : @"Btn", @"NoClass" : @"x", @"UISlider" : (id) @7}];
    Tallyfoot.appInfo = application(@"Shop");
    [Tallyfoot configure:configuration()
                ignoreClasses:(NSArray*)@[ @"UIButton", @8, @"NoClass" ]
        authenticationClosure:^{
          return user(@"t");
        }];
    EXPECT_THAT(tallyfoot::Tallyfoot::shared().ignoreClasses(), ElementsAre("Btn"));
    [Tallyfoot logEvent:EventTypeAction attributes:@{@"evtCategory" : @"Btn"} customAttributes:nil];
    [Tallyfoot logEvent:EventTypeAction attributes:@{@"evtCategory" : @"UISlider"} customAttributes:nil];
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(ObjCTallyfoot, SharesItsSettingsWithTheLibrary) {
    EXPECT_TRUE(Tallyfoot.isEnabled);
    Tallyfoot.isEnabled = NO;
    EXPECT_FALSE(tallyfoot::Tallyfoot::isEnabled());
    Tallyfoot.consoleOutput = YES;
    EXPECT_TRUE(Tallyfoot.showOutput);
    Tallyfoot.showOutput = NO;
    EXPECT_FALSE(Tallyfoot.consoleOutput);
    EXPECT_FALSE(Tallyfoot.ignoreFileSizeThreshold);
    Tallyfoot.ignoreFileSizeThreshold = YES;
    EXPECT_TRUE(tallyfoot::Tallyfoot::ignoreFileSizeThreshold());
    EXPECT_FALSE(Tallyfoot.isSwizzled);
    Tallyfoot.isSwizzled = YES;
    EXPECT_TRUE(tallyfoot::Tallyfoot::isSwizzled());
    EXPECT_EQ(Tallyfoot.pageParent, nil);
    Tallyfoot.pageParent = @"web";
    EXPECT_TRUE([Tallyfoot.pageParent isEqual:@"web"]);
    Tallyfoot.pageParent = nil;
    EXPECT_EQ(tallyfoot::Tallyfoot::pageParent(), std::nullopt);
}

// By their selectors: those of the class with a "+", those of its instances with a "-".
std::set<std::string> methods(const char* name) {
    std::set<std::string> found;
    const auto add = [&](Class aClass, const char* sign) {
        unsigned count = 0;
        Method* const list = class_copyMethodList(aClass, &count);
        for (unsigned i = 0; i < count; ++i) found.insert(std::string(sign) + sel_getName(method_getName(list[i])));
        std::free(list);
    };
    add(objc_getClass(name), "-");
    add(object_getClass((id)objc_getClass(name)), "+");
    for (const char* runtimes : {"+load", "+initialize", "-dealloc"}) found.erase(runtimes);
    return found;
}

TEST(ObjCFace, AnswersToTheseSelectors) {
    EXPECT_EQ(methods("Tallyfoot"), (std::set<std::string>{"+configure:ignoreClasses:authenticationClosure:",
                                                           "+categoryCustomTitles:",
                                                           "+configureSwizzle",
                                                           "+logEventWithType:attributes:customAttributes:",
                                                           "+logEvent:attributes:customAttributes:",
                                                           "+logJSONEventWithType:attributes:customJSONAttributes:",
                                                           "+logJSONEvent:attributes:customJSONAttributes:",
                                                           "+isEnabled",
                                                           "+setIsEnabled:",
                                                           "+showOutput",
                                                           "+setShowOutput:",
                                                           "+consoleOutput",
                                                           "+setConsoleOutput:",
                                                           "+isSwizzled",
                                                           "+setIsSwizzled:",
                                                           "+environment",
                                                           "+setEnvironment:",
                                                           "+appInfo",
                                                           "+setAppInfo:",
                                                           "+pageParent",
                                                           "+setPageParent:",
                                                           "+ignoreFileSizeThreshold",
                                                           "+setIgnoreFileSizeThreshold:",
                                                           "+shared",
                                                           "-authenticationToken"}));
    EXPECT_EQ(methods("ApplicationInfo"),
              (std::set<std::string>{"-init", "-initWithAppName:appId:bizArea:bizAreaId:", "-initWithCoder:",
                                     "-encodeWithCoder:", "-appName", "-appId", "-bizArea", "-bizAreaId"}));
    EXPECT_EQ(methods("Authentication"),
              (std::set<std::string>{"-init", "-initWithUserId:authenticationToken:userLogOnTime:", "-userId",
                                     "-authenticationToken", "-userLogOnTime"}));
    EXPECT_EQ(methods("UploadConfiguration"),
              (std::set<std::string>{"-init", "-initWithSeconds:eventsCount:", "+defaultConfiguration", "+uploadPath",
                                     "-uploadPath", "-setUploadPath:"}));
    EXPECT_EQ(methods("Environment"),
              (std::set<std::string>{"-init", "-setEndpoint:", "-uploadPath", "-setUploadPath:", "-environmentDict"}));
}

TEST_F(ObjCTallyfoot, HasOneSharedInstance) {
    EXPECT_NE(Tallyfoot.shared, nil);
    EXPECT_EQ(Tallyfoot.shared, Tallyfoot.shared);
}

TEST_F(ObjCTallyfoot, GivesBackTheObjectsThatWereSet) {
    ApplicationInfo* shop = application(@"Shop");
    Tallyfoot.appInfo = shop;
    EXPECT_EQ(Tallyfoot.appInfo, shop);
    Tallyfoot.appInfo = nil;
    EXPECT_EQ(Tallyfoot.appInfo, nil);
    Environment* environment = [[[Environment alloc] init] autorelease];
    Tallyfoot.environment = environment;
    EXPECT_EQ(Tallyfoot.environment, environment);
}

TEST_F(ObjCTallyfoot, SeesWhatTheLibraryWasGiven) {
    tallyfoot::Tallyfoot::setAppInfo(std::make_shared<tallyfoot::ApplicationInfo>("Other", "i", "a", "b"));
    EXPECT_TRUE([Tallyfoot.appInfo.appName isEqual:@"Other"]);
    EXPECT_EQ(Tallyfoot.appInfo, Tallyfoot.appInfo);
}

TEST_F(ObjCTallyfoot, MakesADefaultEnvironmentWhereThereIsNone) {
    Environment* made = Tallyfoot.environment;
    EXPECT_TRUE([made.uploadPath isEqual:@"no such path"]);
    EXPECT_EQ(Tallyfoot.environment, made);
    made.uploadPath = @"changed";
    EXPECT_EQ(tallyfoot::Tallyfoot::environment()->uploadPath(), "changed");
    Tallyfoot.environment = nil;
    EXPECT_TRUE([Tallyfoot.environment.uploadPath isEqual:@"no such path"]);
}

TEST_F(ObjCTallyfoot, TakesAnObjectOfAnotherClassForNone) {
    Tallyfoot.appInfo = (ApplicationInfo*)@"Shop";
    EXPECT_EQ(Tallyfoot.appInfo, nil);
    [Tallyfoot configure:(UploadConfiguration*)@"x"
                ignoreClasses:(NSArray*)@"y"
        authenticationClosure:^{
          return user(@"t");
        }];
    EXPECT_EQ(tallyfoot::Tallyfoot::shared().uploadConfiguration(),
              tallyfoot::UploadConfiguration::defaultConfiguration());
}

TEST_F(ObjCTallyfoot, TakesAnObjectThatRaisesForNone) {
    start();
    id proxy = [[[RaisingProxy alloc] init] autorelease];
    Tallyfoot.environment.uploadPath = @"changed";
    Tallyfoot.environment = proxy;
    EXPECT_TRUE([Tallyfoot.environment.uploadPath isEqual:@"no such path"]);
    [Tallyfoot configure:proxy ignoreClasses:@[ @"UISlider" ] authenticationClosure:nil];
    EXPECT_THAT(tallyfoot::Tallyfoot::shared().ignoreClasses(), ElementsAre("UISlider"));
    [Tallyfoot logEventWithType:proxy attributes:proxy customAttributes:proxy];
    EXPECT_EQ(records().at(0)["evtType"], "");
    Tallyfoot.appInfo = proxy;
    EXPECT_EQ(Tallyfoot.appInfo, nil);
}

TEST_F(ObjCTallyfoot, InstallsTheInterceptionsWhenItsEnvironmentIsSet) {
    EXPECT_FALSE(Tallyfoot.isSwizzled);
    Tallyfoot.environment = [[[Environment alloc] init] autorelease];
    EXPECT_TRUE(Tallyfoot.isSwizzled);
}

TEST_F(ObjCTallyfoot, KeepsTheClosureAndAllThatItCaptured) {
    @autoreleasepool {
        NSString* token = [NSString stringWithFormat:@"token-%d", 7];
        [Tallyfoot configure:configuration()
                    ignoreClasses:@[]
            authenticationClosure:^{
              return user(token);
            }];
    }
    Tallyfoot.appInfo = application(@"Shop");
    EXPECT_TRUE([Tallyfoot.shared.authenticationToken isEqual:@"token-7"]);
}

TEST_F(ObjCTallyfoot, AsksTheClosureAgainAfterItRaised) {
    __block int asked = 0;
    [Tallyfoot configure:configuration()
                ignoreClasses:@[]
        authenticationClosure:^Authentication* {
          if (++asked == 1) [NSException raise:@"NotNow" format:@"no keychain"];
          return user(@"second");
        }];
    Tallyfoot.appInfo = application(@"Shop");
    Tallyfoot.appInfo = application(@"Shop");
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE([Tallyfoot.shared.authenticationToken isEqual:@"second"]);
}

TEST_F(ObjCTallyfoot, IsFatalWithoutCredentials) {
    EXPECT_DEATH((void)Tallyfoot.shared.authenticationToken, "authenticationToken needs");
    [Tallyfoot configure:configuration()
                ignoreClasses:@[]
        authenticationClosure:^Authentication* {
          return nil;
        }];
    EXPECT_DEATH(Tallyfoot.appInfo = application(@"Shop"), "");
}

TEST_F(ObjCTallyfoot, AsksTheClosureAgainAfterItThrewInCPlusPlus) {
    __block int asked = 0;
    [Tallyfoot configure:configuration()
                ignoreClasses:@[]
        authenticationClosure:^Authentication* {
          if (++asked == 1) throw std::runtime_error("no keychain");
          return user(@"second");
        }];
    Tallyfoot.appInfo = application(@"Shop");
    Tallyfoot.appInfo = application(@"Shop");
    EXPECT_TRUE([Tallyfoot.shared.authenticationToken isEqual:@"second"]);
}

TEST_F(ObjCTallyfoot, KeepsNothingThatTheClosureMadeBeforeItRaised) {
    NSMutableString* made = [NSMutableString string];
    [Tallyfoot configure:configuration()
                ignoreClasses:@[]
        authenticationClosure:^Authentication* {
          [[made retain] autorelease];
          [NSException raise:@"NotNow" format:@"no keychain"];
          return nil;
        }];
    const NSUInteger count = [made retainCount];
    Tallyfoot.appInfo = application(@"Shop");
    EXPECT_EQ([made retainCount], count);
}

TEST_F(ObjCTallyfoot, KeepsNothingOfACallUntilTheHostsPoolGoes) {
    start();
    NSMutableString* text = [NSMutableString stringWithString:@"Basket"];
    NSDictionary* own = [[[PlainDictionary alloc] initWithEntries:@{@"pgName" : text}] autorelease];
    const NSUInteger count = [text retainCount];
    [Tallyfoot logEvent:EventTypeAction attributes:own customAttributes:own];
    [Tallyfoot logEventWithType:@"purchase" attributes:own customAttributes:own];
    [Tallyfoot logJSONEvent:EventTypeAction attributes:own customJSONAttributes:nil];
    [Tallyfoot logJSONEventWithType:@"purchase" attributes:own customJSONAttributes:nil];
    [Tallyfoot categoryCustomTitles:own];
    EXPECT_EQ([text retainCount], count);
}

TEST_F(ObjCTallyfoot, MayBeCalledByManyThreadsAtOnce) {
    start();
    using Call = void (*)();
    static constexpr Call calls[]{
        [] {
            [Tallyfoot logEvent:EventTypeAction attributes:@{@"pgName" : @"a"} customAttributes:@{@"b" : @1}];
        },
        [] { Tallyfoot.appInfo = application(@"Shop"); },
        [] { Tallyfoot.appInfo = nil; },
        [] { (void)Tallyfoot.appInfo.appName; },
        [] { Tallyfoot.environment = [[[Environment alloc] init] autorelease]; },
        [] { Tallyfoot.environment = nil; },
        [] { [Tallyfoot.environment setEndpoint:EndpointProd]; },
        [] { Tallyfoot.pageParent = @"web"; },
        [] { (void)Tallyfoot.pageParent; },
        [] { UploadConfiguration.defaultConfiguration.uploadPath = @"http://127.0.0.1:1/upload"; },
        [] { (void)UploadConfiguration.defaultConfiguration.uploadPath; },
        [] { [Tallyfoot categoryCustomTitles:@{@"UIButton" : @"Btn"}]; },
        [] {
            NSString* token = [NSString stringWithFormat:@"token-%d", 7];
            [Tallyfoot configure:configuration()
                        ignoreClasses:@[ @"UIButton" ]
                authenticationClosure:^{
                  return user(token);
                }];
        },
        [] { (void)Tallyfoot.shared.authenticationToken; }};
    constexpr int rounds = 20;
    std::vector<std::future<void>> threads;
    for (const auto call : calls)
        threads.push_back(std::async(std::launch::async, [call] {
            for (int round = 0; round < rounds; ++round) {
                @autoreleasepool {
                    call();
                }
            }
        }));
    for (auto& thread : threads) thread.get();
    EXPECT_THAT(records(), SizeIs(rounds));
}

// Such a thread has no autorelease pool either.
TEST_F(ObjCTallyfoot, LogsFromThreadsThatFoundationDoesNotKnow) {
    start();
    NSMutableString* text = [NSMutableString stringWithString:@"Basket"];
    NSDictionary* own = [[[PlainDictionary alloc] initWithEntries:@{@"pgName" : text}] autorelease];
    const NSUInteger count = [text retainCount];
    std::async(std::launch::async, [&] {
        [Tallyfoot logEvent:EventTypeAction attributes:own customAttributes:own];
    }).get();
    EXPECT_THAT(records(), SizeIs(1));
    EXPECT_EQ([text retainCount], count);
}

} // namespace
