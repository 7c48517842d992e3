#include "TallyfootObjC/Binding/Binding.h"
#include "TallyfootObjC/Binding/ClassLoading.h"
#include "TallyfootObjC/Binding/UncaughtExceptions.h"
#include "TallyfootObjC/Face/LastObject.h"
#include "TallyfootObjC/Face/Records.h"
#include "TallyfootObjC/Support/Blocks.h"
#include "TallyfootObjC/Support/Dictionaries.h"
#include "TallyfootObjC/Support/Guard.h"
#include "TallyfootObjC/Support/Text.h"

#include <limits>
#include <stdexcept>

using namespace tallyfoot::objc;
using Facade = tallyfoot::Tallyfoot;

namespace {

// Never released: a host may ask while its process ends.
LastObject& lastAppInfo() {
    static auto& last = *new LastObject;
    return last;
}

LastObject& lastEnvironment() {
    static auto& last = *new LastObject;
    return last;
}

template <class Object, class Record>
Object* object(LastObject& last, const std::shared_ptr<Record>& record) {
    if (record == nullptr) return nil;
    if (id kept = last.find(record.get())) return kept;
    Object* made = [newObject(record) autorelease];
    last.keep(made, record.get());
    return made;
}

// A number beyond the enumeration stays one, however many digits it has.
tallyfoot::EventType eventType(EventType type) {
    const bool isCase = type >= EventTypeCrash && type <= EventTypeAlert;
    return static_cast<tallyfoot::EventType>(isCase ? static_cast<int>(type) : -1);
}

using AuthenticationBlock = Authentication* (^)(void);

// What a host's call makes on its way goes when it returns: a thread may have no pool, and a host that logs
// in a loop seldom drains its own. The pool is the outer one, for an exception passes by the end of an inner one.
bool guardedInPool(tallyfoot::FunctionRef<void()> block) {
    bool isCompleted = false;
    @autoreleasepool {
        isCompleted = guarded(block);
    }
    return isCompleted;
}

// UIKit may be asked on the main thread only; from any other the size stays what it was.
void reportScreenSize() {
    if ([NSThread isMainThread]) capture().reportScreenSize();
}

// What the block raises goes on as C++'s own kind, which the recorder deals with; nil goes on as nothing,
// which it does not forgive.
std::shared_ptr<tallyfoot::Authentication> ask(const void* block) {
    std::shared_ptr<tallyfoot::Authentication> answer;
    if (!guardedInPool([&] { answer = record(((AuthenticationBlock)block)()); }))
        throw std::runtime_error("the authentication closure raised an exception");
    return answer;
}

Facade::AuthenticationClosure closure(AuthenticationBlock block) {
    if (block == nil) return nullptr;
    return [copy = copyBlock((const void*)block)] { return ask(copy.get()); };
}

} // namespace

@implementation Tallyfoot

+ (void)load {
    prepareWithClasses();
    connectUncaughtExceptions();
}

+ (void)initialize {
    if (self == [Tallyfoot class]) capture().prepare();
}

// --- Switching on

+ (void)configure:(UploadConfiguration*)configuration
            ignoreClasses:(NSArray*)ignoreClasses
    authenticationClosure:(AuthenticationBlock)authenticationClosure {
    guardedInPool([&] {
        reportScreenSize();
        Facade::configure(record(configuration), texts(ignoreClasses), closure(authenticationClosure));
    });
}

+ (ApplicationInfo*)appInfo {
    return object<ApplicationInfo>(lastAppInfo(), Facade::appInfo());
}

+ (void)setAppInfo:(ApplicationInfo*)appInfo {
    guardedInPool([&] {
        reportScreenSize();
        const auto info = record(appInfo);
        lastAppInfo().keep(info ? appInfo : nil, info.get());
        Facade::setAppInfo(info);
    });
}

+ (void)categoryCustomTitles:(NSDictionary*)titles {
    guardedInPool([&] { Facade::categoryCustomTitles(texts(titles)); });
}

+ (void)configureSwizzle {
    Facade::configureSwizzle();
}

// --- Logging

+ (void)logEventWithType:(NSString*)type
              attributes:(NSDictionary*)attributes
        customAttributes:(NSDictionary*)customAttributes {
    guardedInPool([&] {
        Facade::log(text(type), tallyfoot::objc::attributes(attributes),
                    tallyfoot::objc::customAttributes(customAttributes));
    });
}

+ (void)logEvent:(EventType)type attributes:(NSDictionary*)attributes customAttributes:(NSDictionary*)customAttributes {
    guardedInPool([&] {
        Facade::log(eventType(type), tallyfoot::objc::attributes(attributes),
                    tallyfoot::objc::customAttributes(customAttributes));
    });
}

+ (void)logJSONEventWithType:(NSString*)type
                  attributes:(NSDictionary*)attributes
        customJSONAttributes:(NSString*)customJSONAttributes {
    guardedInPool([&] {
        Facade::logJSON(text(type), tallyfoot::objc::attributes(attributes), optionalText(customJSONAttributes));
    });
}

+ (void)logJSONEvent:(EventType)type
              attributes:(NSDictionary*)attributes
    customJSONAttributes:(NSString*)customJSONAttributes {
    guardedInPool([&] {
        Facade::logJSON(eventType(type), tallyfoot::objc::attributes(attributes), optionalText(customJSONAttributes));
    });
}

// --- Settings

+ (BOOL)isEnabled {
    return Facade::isEnabled();
}

+ (void)setIsEnabled:(BOOL)isEnabled {
    Facade::setIsEnabled(isEnabled);
}

+ (BOOL)showOutput {
    return Facade::showOutput();
}

+ (void)setShowOutput:(BOOL)showOutput {
    Facade::setShowOutput(showOutput);
}

+ (BOOL)consoleOutput {
    return Facade::consoleOutput();
}

+ (void)setConsoleOutput:(BOOL)consoleOutput {
    Facade::setConsoleOutput(consoleOutput);
}

+ (BOOL)isSwizzled {
    return Facade::isSwizzled();
}

+ (void)setIsSwizzled:(BOOL)isSwizzled {
    Facade::setIsSwizzled(isSwizzled);
}

+ (BOOL)ignoreFileSizeThreshold {
    return Facade::ignoreFileSizeThreshold();
}

+ (void)setIgnoreFileSizeThreshold:(BOOL)ignoreFileSizeThreshold {
    Facade::setIgnoreFileSizeThreshold(ignoreFileSizeThreshold);
}

+ (NSString*)pageParent {
    return optionalString(Facade::pageParent());
}

+ (void)setPageParent:(NSString*)pageParent {
    guardedInPool([&] { Facade::setPageParent(optionalText(pageParent)); });
}

+ (Environment*)environment {
    return object<Environment>(lastEnvironment(), Facade::environment());
}

+ (void)setEnvironment:(Environment*)environment {
    guardedInPool([&] {
        const auto changed = record(environment);
        lastEnvironment().keep(changed ? environment : nil, changed.get());
        Facade::setEnvironment(changed);
    });
}

// --- The shared instance

+ (Tallyfoot*)shared {
    static Tallyfoot* const shared = [[Tallyfoot alloc] init];
    return shared;
}

- (NSString*)authenticationToken {
    return string(Facade::shared().authenticationToken());
}

@end
