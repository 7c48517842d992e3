#include "ObjC/ObjCHost.h"

#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"
#include "Tallyfoot/Platform/Coder.h"
#include "Tallyfoot/Platform/KeyedArchiver.h"
#include "Tallyfoot/Platform/PlatformServices.h"

namespace {

using namespace tallyfoot::testing;

using ObjCApplicationInfo = ObjCHost;

ApplicationInfo* shop() {
    return [[[ApplicationInfo alloc] initWithAppName:@"Shop" appId:@"shop-1" bizArea:@"Retail"
                                           bizAreaId:@"R-7"] autorelease];
}

void expectShop(ApplicationInfo* info) {
    EXPECT_TRUE([info.appName isEqual:@"Shop"]);
    EXPECT_TRUE([info.appId isEqual:@"shop-1"]);
    EXPECT_TRUE([info.bizArea isEqual:@"Retail"]);
    EXPECT_TRUE([info.bizAreaId isEqual:@"R-7"]);
}

// An archive of an ApplicationInfo with these fields.
NSData* archive(NSDictionary* fields) {
    NSMutableData* data = [NSMutableData data];
    NSKeyedArchiver* archiver = [[[NSKeyedArchiver alloc] initForWritingWithMutableData:data] autorelease];
    for (NSString* key in fields) [archiver encodeObject:[fields objectForKey:key] forKey:key];
    [archiver finishEncoding];
    return data;
}

ApplicationInfo* decoded(NSDictionary* fields) {
    NSKeyedUnarchiver* unarchiver = [[[NSKeyedUnarchiver alloc] initForReadingWithData:archive(fields)] autorelease];
    return [[[ApplicationInfo alloc] initWithCoder:unarchiver] autorelease];
}

TEST_F(ObjCApplicationInfo, HasItsFields) { expectShop(shop()); }

TEST_F(ObjCApplicationInfo, WithoutANameCarriesTheBundles) {
    ApplicationInfo* info = [[[ApplicationInfo alloc] initWithAppName:nil appId:@"" bizArea:@""
                                                            bizAreaId:@""] autorelease];
    EXPECT_TRUE([info.appName isEqual:@"Bundled"]);
}

TEST_F(ObjCApplicationInfo, IsFatalWithoutItsValues) {
    EXPECT_DEATH((void)[[NSClassFromString(@"ApplicationInfo") alloc] init], "without its values");
    EXPECT_DEATH((void)[NSClassFromString(@"ApplicationInfo") new], "without its values");
}

TEST_F(ObjCApplicationInfo, TakesNilForAnEmptyText) {
    NSString* none = nil;
    ApplicationInfo* info = [[[ApplicationInfo alloc] initWithAppName:@"Shop" appId:none bizArea:none
                                                            bizAreaId:none] autorelease];
    EXPECT_TRUE([info.appId isEqual:@""]);
}

TEST_F(ObjCApplicationInfo, TakesATextThatRaisesForNone) {
    NSString* text = [[[RaisingText alloc] init] autorelease];
    ApplicationInfo* info = [[[ApplicationInfo alloc] initWithAppName:text appId:text bizArea:text
                                                            bizAreaId:text] autorelease];
    EXPECT_TRUE([info.appName isEqual:@"Bundled"]);
    EXPECT_TRUE([info.appId isEqual:@""]);
}

TEST_F(ObjCApplicationInfo, ComesBackFromAnArchive) {
    NSData* data = [NSKeyedArchiver archivedDataWithRootObject:shop()];
    expectShop([NSKeyedUnarchiver unarchiveObjectWithData:data]);
}

TEST_F(ObjCApplicationInfo, ReadsWhatTheLibraryHasArchived) {
    tallyfoot::Coder coder(tallyfoot::ApplicationInfo::archiveClassName);
    tallyfoot::ApplicationInfo("Shop", "shop-1", "Retail", "R-7").encode(coder);
    const std::string bytes = tallyfoot::defaultPlatformServices().keyedArchiver->archivedData(coder);
    expectShop([NSKeyedUnarchiver unarchiveObjectWithData:[NSData dataWithBytes:bytes.data() length:bytes.size()]]);
}

TEST_F(ObjCApplicationInfo, TakesTheBundlesNameWhereTheArchiveHasNoTextForIt) {
    NSDictionary* others = @{@"appId" : @"i", @"bizArea" : @"a", @"bizAreaId" : @"b"};
    EXPECT_TRUE([decoded(others).appName isEqual:@"Bundled"]);
    NSMutableDictionary* mistyped = [NSMutableDictionary dictionaryWithDictionary:others];
    [mistyped setObject:@7 forKey:@"appName"];
    EXPECT_TRUE([decoded(mistyped).appName isEqual:@"Bundled"]);
}

TEST_F(ObjCApplicationInfo, IsFatalToDecodeWithoutAnIdentity) {
    for (NSString* missing in @[ @"appId", @"bizArea", @"bizAreaId" ]) {
        NSMutableDictionary* fields = [NSMutableDictionary
            dictionaryWithDictionary:@{@"appName" : @"n", @"appId" : @"i", @"bizArea" : @"a", @"bizAreaId" : @"b"}];
        [fields removeObjectForKey:missing];
        EXPECT_DEATH(decoded(fields), [missing UTF8String]);
        [fields setObject:@7 forKey:missing];
        EXPECT_DEATH(decoded(fields), [missing UTF8String]);
    }
}

} // namespace
