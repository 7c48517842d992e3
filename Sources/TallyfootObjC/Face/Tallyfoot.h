#pragma once

#import <Foundation/Foundation.h>
#import <TallyfootObjC/Face/EventType.h>
#import <TallyfootObjC/Face/Export.h>

@class ApplicationInfo, Authentication, Environment, UploadConfiguration;

NS_ASSUME_NONNULL_BEGIN

// The one class through which a host switches the library on, sets it up and logs events of its own.
// Every call may come from any thread; none raises. An argument that may not be nil but is, or that is of
// another class, counts as empty: a text without characters, a dictionary without entries.
TALLYFOOT_OBJC_EXPORT
@interface Tallyfoot : NSObject

// --- Switching on

// Together with appInfo, in either order, starts the recording; events logged before both are lost. The
// block is copied, and asked for the user's credentials when recording starts and whenever the server
// rejects the token, on the thread that needs them; returning nil is fatal. `ignoreClasses` are platform
// class names ("UISlider"), unknown ones are dropped. May be called again. Without a configuration the
// default one is used; without a block the former one stays.
+ (void)configure:(nullable UploadConfiguration*)configuration
            ignoreClasses:(NSArray<NSString*>*)ignoreClasses
    authenticationClosure:(nullable Authentication* (^)(void))authenticationClosure;

// Another appName switches the recording to that application. Without one events are not shown.
@property(class, nonatomic, strong, nullable) ApplicationInfo* appInfo;

// Categories of the host's own, by platform class name; unknown names are dropped. Replaces the former ones.
+ (void)categoryCustomTitles:(NSDictionary<NSString*, NSString*>*)titles;

// Installs automatic capture, unless isSwizzled; `configure` and setting the environment do so too.
+ (void)configureSwizzle;

// --- Logging
// An event is on disk when its call returns. Attributes go by record key ("pgName"); unknown keys, and
// values that are no texts, are dropped. Custom data that JSON does not know is left out and its event kept.

+ (void)logEventWithType:(NSString*)type
              attributes:(NSDictionary<NSString*, NSString*>*)attributes
        customAttributes:(nullable NSDictionary<NSString*, id>*)customAttributes;
+ (void)logEvent:(EventType)type
          attributes:(NSDictionary<NSString*, NSString*>*)attributes
    customAttributes:(nullable NSDictionary<NSString*, id>*)customAttributes;

// Custom data as JSON text; one that does not begin with "[" becomes an array of one.
+ (void)logJSONEventWithType:(NSString*)type
                  attributes:(NSDictionary<NSString*, NSString*>*)attributes
        customJSONAttributes:(nullable NSString*)customJSONAttributes;
+ (void)logJSONEvent:(EventType)type
              attributes:(NSDictionary<NSString*, NSString*>*)attributes
    customJSONAttributes:(nullable NSString*)customJSONAttributes;

// --- Settings

@property(class, nonatomic) BOOL isEnabled;                       // off: events are shown, not written
@property(class, nonatomic) BOOL showOutput;                      // the console output, on by default
@property(class, nonatomic) BOOL consoleOutput;                   // its second name
@property(class, nonatomic) BOOL isSwizzled;                      // whether automatic capture has been installed
@property(class, nonatomic) BOOL ignoreFileSizeThreshold;         // on: every event triggers an upload; for testing
@property(class, nonatomic, copy, nullable) NSString* pageParent; // every later event's "pgPrnt"; "iOS" when none
@property(class, nonatomic, strong, null_resettable) Environment* environment;

// --- The shared instance

@property(class, nonatomic, readonly) Tallyfoot* shared;

// The token of the credentials in use. Fatal before the recording has started.
@property(nonatomic, readonly) NSString* authenticationToken;

@end

NS_ASSUME_NONNULL_END
