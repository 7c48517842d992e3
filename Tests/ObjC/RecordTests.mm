#include "ObjC/ObjCHost.h"
#include "TallyfootObjC/Face/Records.h"

#include <objc/runtime.h>

// Passes for what it stands in front of, with an instance variable where that would have its own.
@interface StandIn : NSObject {
    id _behind;
}
- (instancetype)initWithObject:(id)behind;
@end

@implementation StandIn

- (instancetype)initWithObject:(id)behind {
    if ((self = [super init]) != nil) _behind = [behind retain];
    return self;
}

- (void)dealloc {
    [_behind release];
    [super dealloc];
}

- (BOOL)isKindOfClass:(Class)aClass {
    return [_behind isKindOfClass:aClass];
}

@end

namespace {

using namespace tallyfoot::testing;
using tallyfoot::objc::record;

using ObjCAuthentication = ObjCHost;
using ObjCUploadConfiguration = ObjCHost;
using ObjCEnvironment = ObjCHost;
using ObjCRecord = ObjCHost;

constexpr const char* bases = "<key>uploadBases</key><dict><key>prod</key><string>prod.example</string></dict>";

TEST_F(ObjCAuthentication, HasItsFields) {
    Authentication* user = [[[Authentication alloc] initWithUserId:@"user-1"
                                               authenticationToken:@"token-1"
                                                     userLogOnTime:@"noon"] autorelease];
    EXPECT_TRUE([user.userId isEqual:@"user-1"]);
    EXPECT_TRUE([user.authenticationToken isEqual:@"token-1"]);
    EXPECT_TRUE([user.userLogOnTime isEqual:@"noon"]);
}

TEST_F(ObjCAuthentication, MayHaveNoLogOnTime) {
    Authentication* user = [[[Authentication alloc] initWithUserId:@"" authenticationToken:@""
                                                     userLogOnTime:nil] autorelease];
    EXPECT_EQ(user.userLogOnTime, nil);
}

TEST_F(ObjCAuthentication, TakesATextThatRaisesForAnEmptyOne) {
    NSString* text = [[[RaisingText alloc] init] autorelease];
    Authentication* user = [[[Authentication alloc] initWithUserId:text authenticationToken:text
                                                     userLogOnTime:text] autorelease];
    EXPECT_TRUE([user.userId isEqual:@""]);
    EXPECT_TRUE([user.authenticationToken isEqual:@""]);
    EXPECT_EQ(user.userLogOnTime, nil);
}

TEST_F(ObjCAuthentication, IsFatalWithoutItsValues) {
    EXPECT_DEATH((void)[[NSClassFromString(@"Authentication") alloc] init], "without its values");
}

TEST_F(ObjCUploadConfiguration, RaisesSmallValues) {
    UploadConfiguration* configuration = [[[UploadConfiguration alloc] initWithSeconds:5 eventsCount:3] autorelease];
    EXPECT_EQ(record(configuration)->frequency(), tallyfoot::RepeaterInterval::seconds(10));
    EXPECT_EQ(record(configuration)->eventsCount(), 10);
    EXPECT_EQ(configuration.uploadPath, nil);
}

TEST_F(ObjCUploadConfiguration, KeepsAndForgetsItsUploadPath) {
    UploadConfiguration* configuration = [[[UploadConfiguration alloc] initWithSeconds:60 eventsCount:20] autorelease];
    configuration.uploadPath = @"https://a.example";
    EXPECT_TRUE([configuration.uploadPath isEqual:@"https://a.example"]);
    EXPECT_EQ(record(configuration)->uploadPath(), "https://a.example");
    configuration.uploadPath = nil;
    EXPECT_EQ(configuration.uploadPath, nil);
}

TEST_F(ObjCUploadConfiguration, HasNoUploadPathWhereThatRaises) {
    UploadConfiguration* configuration = [[[UploadConfiguration alloc] initWithSeconds:60 eventsCount:20] autorelease];
    configuration.uploadPath = [[[RaisingText alloc] init] autorelease];
    EXPECT_EQ(configuration.uploadPath, nil);
}

TEST_F(ObjCUploadConfiguration, HasADefaultThatIsShared) {
    EXPECT_NE(UploadConfiguration.defaultConfiguration, nil);
    EXPECT_EQ(UploadConfiguration.defaultConfiguration, UploadConfiguration.defaultConfiguration);
    EXPECT_EQ(record(UploadConfiguration.defaultConfiguration), tallyfoot::UploadConfiguration::defaultConfiguration());
}

TEST_F(ObjCUploadConfiguration, HasAFixedUploadPath) {
    EXPECT_TRUE([UploadConfiguration.uploadPath
        hasSuffix:@"/qmx/tallyfootServer/businessareas/utility/subjectareas/tallyfootServer/proxy/"
                  @"tallyfootUploadFiles"]);
}

TEST_F(ObjCUploadConfiguration, IsFatalWithoutItsValues) {
    EXPECT_DEATH((void)[[NSClassFromString(@"UploadConfiguration") alloc] init], "without its values");
}

TEST_F(ObjCEnvironment, StartsUnresolved) {
    Environment* environment = [[[Environment alloc] init] autorelease];
    EXPECT_TRUE([environment.uploadPath isEqual:@"no such path"]);
    EXPECT_EQ(environment.environmentDict, nil);
    EXPECT_EQ(record(environment)->endpoint(), std::nullopt);
}

TEST_F(ObjCEnvironment, ResolvesAnEndpoint) {
    bundle_.addEnvironment("Host", bases);
    Environment* environment = [[[Environment alloc] init] autorelease];
    [environment setEndpoint:EndpointDev];
    EXPECT_TRUE([environment.uploadPath isEqual:@"no such path"]);
    [environment setEndpoint:EndpointProd];
    EXPECT_TRUE([environment.uploadPath
        isEqual:@"https://prod.example/qmx/tallyfootServer/businessareas/utilities/subjectareas/tallyfootServer/"
                @"proxy/tallyfootUploadFiles"]);
    EXPECT_TRUE([environment.environmentDict isEqual:@{@"uploadBases" : @{@"prod" : @"prod.example"}}]);
}

TEST_F(ObjCEnvironment, TakesANumberThatIsNoEndpointForNone) {
    bundle_.addEnvironment("Host", bases);
    Environment* environment = [[[Environment alloc] init] autorelease];
    for (const NSInteger number : {NSInteger{3}, NSInteger{-1}, NSInteger{4294967296 + 2}}) {
        [environment setEndpoint:EndpointUat];
        [environment setEndpoint:static_cast<Endpoint>(number)];
        EXPECT_EQ(record(environment)->endpoint(), std::nullopt) << number;
    }
    EXPECT_TRUE([environment.uploadPath isEqual:@"no such path"]);
}

TEST_F(ObjCRecord, IsNoneInAnObjectThatOnlyPassesForItsClass) {
    Environment* environment = [[[Environment alloc] init] autorelease];
    id standIn = [[[StandIn alloc] initWithObject:environment] autorelease];
    EXPECT_EQ(record((Environment*)standIn), nullptr);
}

TEST_F(ObjCRecord, IsThatOfAnObjectOfASubclass) {
    Environment* environment = [[[Environment alloc] init] autorelease];
    const auto before = record(environment);
    Class made = objc_allocateClassPair([Environment class], "NSKVONotifying_Environment", 0);
    objc_registerClassPair(made);
    object_setClass(environment, made);
    EXPECT_EQ(record(environment), before);
    object_setClass(environment, [Environment class]);
}

TEST_F(ObjCEnvironment, MayHaveItsUploadPathOverwritten) {
    Environment* environment = [[[Environment alloc] init] autorelease];
    environment.uploadPath = @"https://b.example";
    EXPECT_TRUE([environment.uploadPath isEqual:@"https://b.example"]);
}

} // namespace
