#include "ObjC/ObjCHost.h"

#include <cstdlib>
#include <filesystem>

// Foundation makes no such text from bytes or characters, but takes it from a class of the host's.
@interface LoneSurrogate : NSString
@end

@implementation LoneSurrogate

- (NSUInteger)length {
    return 3;
}

- (unichar)characterAtIndex:(NSUInteger)index {
    const unichar units[] = {'a', 0xD800, 'b'};
    return units[index];
}

- (id)copyWithZone:(NSZone*)zone {
    (void)zone;
    return [self retain];
}

@end

using nlohmann::json;
using tallyfoot::testing::ObjCHost;

extern "C" void __lsan_disable() __attribute__((weak));
extern "C" void __lsan_enable() __attribute__((weak));

namespace {

// Foundation reads the user's settings once and does not give back all that it needs for that. Only this
// is kept from whoever looks for leaks: not what Foundation makes for us.
void letFoundationReadItsSettings() {
    if (__lsan_disable) __lsan_disable();
    [NSUserDefaults standardUserDefaults];
    if (__lsan_enable) __lsan_enable();
}

} // namespace

ObjCHost::ObjCHost() {
    letFoundationReadItsSettings();
    ::setenv("XDG_DATA_HOME", (root_ / "data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
    Tallyfoot.showOutput = NO;
}

ObjCHost::~ObjCHost() { [pool_ drain]; }

void ObjCHost::start() {
    UploadConfiguration* configuration = [[[UploadConfiguration alloc] initWithSeconds:3600
                                                                           eventsCount:1000000] autorelease];
    configuration.uploadPath = @"http://127.0.0.1:1/upload";
    Tallyfoot.appInfo = [[[ApplicationInfo alloc] initWithAppName:@"Shop"
                                                            appId:@"shop-1"
                                                          bizArea:@"Retail"
                                                        bizAreaId:@"R-7"] autorelease];
    [Tallyfoot configure:configuration
                ignoreClasses:@[]
        authenticationClosure:^{
          return [[[Authentication alloc] initWithUserId:@"user-1" authenticationToken:@"token-1"
                                           userLogOnTime:nil] autorelease];
        }];
}

std::vector<json> ObjCHost::records(const std::string& appName) const {
    std::string all;
    const std::filesystem::path folder = root_ / ("data/Tallyfoot/" + appName + "/Events");
    if (std::filesystem::exists(folder))
        for (const auto& file : std::filesystem::directory_iterator(folder))
            all += tallyfoot::testing::readFile(file.path());
    std::vector<json> parsed;
    for (std::size_t begin = 0; begin < all.size();) {
        const auto end = all.find("jsonsplit", begin);
        parsed.push_back(json::parse(all.substr(begin, end - begin)));
        begin = end + 9;
    }
    return parsed;
}

std::string ObjCHost::recorded() {
    const auto all = records();
    std::string text;
    for (; seen_ < all.size(); ++seen_) {
        std::string event;
        for (const char* key : {"evtType", "evtCategory", "evtAction", "evtLabel"})
            if (all[seen_].contains(key)) event += (event.empty() ? "" : " ") + all[seen_][key].get<std::string>();
        text += (text.empty() ? "" : "; ") + event;
    }
    return text;
}

NSString* tallyfoot::testing::loneSurrogate() { return [[[LoneSurrogate alloc] init] autorelease]; }

@implementation RaisingDictionary

- (NSUInteger)count {
    return 1;
}

- (id)objectForKey:(id)key {
    [NSException raise:@"NotNow" format:@"%@", key];
    return nil;
}

- (NSEnumerator*)keyEnumerator {
    [NSException raise:@"NotNow" format:@"no keys"];
    return nil;
}

@end

@implementation RaisingText

- (NSUInteger)length {
    [NSException raise:@"NotNow" format:@"no length"];
    return 0;
}

- (unichar)characterAtIndex:(NSUInteger)index {
    [NSException raise:@"NotNow" format:@"%lu", (unsigned long)index];
    return 0;
}

- (id)copyWithZone:(NSZone*)zone {
    (void)zone;
    return [self retain];
}

@end

@implementation RaisingProxy

- (instancetype)init {
    return self;
}

@end

@implementation PlainDictionary

- (instancetype)initWithEntries:(NSDictionary*)entries {
    if ((self = [super init]) != nil) _entries = [entries retain];
    return self;
}

- (void)dealloc {
    [_entries release];
    [super dealloc];
}

- (NSUInteger)count {
    return [_entries count];
}

- (id)objectForKey:(id)key {
    return [[[_entries objectForKey:key] retain] autorelease];
}

- (NSEnumerator*)keyEnumerator {
    return [_entries keyEnumerator];
}

@end

@implementation PlainArray

- (instancetype)initWithElements:(NSArray*)elements {
    if ((self = [super init]) != nil) _elements = [elements retain];
    return self;
}

- (void)dealloc {
    [_elements release];
    [super dealloc];
}

- (NSUInteger)count {
    return [_elements count];
}

- (id)objectAtIndex:(NSUInteger)index {
    return [_elements objectAtIndex:index];
}

@end
