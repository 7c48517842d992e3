#pragma once

#import <Foundation/Foundation.h>
#import <TallyfootObjC/Face/EventType.h>
#import <TallyfootObjC/Face/Export.h>

@class ApplicationInfo, Authentication, Environment, UploadConfiguration;

NS_ASSUME_NONNULL_BEGIN

// The one class through which a host switches the library on, sets it up and logs events of its own.
// Every call may come from any thread, with or without an autorelease pool; none raises, and each leaves
// errno as it was. An argument that may not be nil but is, that is of another class, or that raises when it
// is read, counts as empty: a text without characters, a dictionary without entries. Half a surrogate pair
// in a text becomes U+FFFD.
TALLYFOOT_OBJC_EXPORT
@interface Tallyfoot : NSObject

// --- Switching on

// Together with appInfo, in either order, starts the recording; events logged before both are lost. Fatal
// where the user has no folder for application data. `ignoreClasses` are platform class names ("UISlider"),
// unknown ones are dropped; events of their categories, by the custom titles of this moment, are not
// recorded. May be called again: block, configuration and ignored classes are replaced, but a recording that
// runs keeps the configuration that it started with. Without a configuration the default one is used;
// without a block the former one stays.
// The block is copied, and asked for the user's credentials when recording starts and whenever the server
// rejects the token, on the thread that needs them, in an autorelease pool and with nothing of the library's
// held, so that it may take its time, log and configure. Returning nil is fatal. If it raises at the start,
// the next `configure` or `setAppInfo:` tries again; later, the former credentials stay.
// Each call also takes over uncaught exceptions and the signals SIGABRT, SIGILL, SIGSEGV, SIGFPE, SIGBUS and
// SIGPIPE, and then logs the crash of the run before: set appInfo first, or that event has nowhere to go.
+ (void)configure:(nullable UploadConfiguration*)configuration
            ignoreClasses:(NSArray<NSString*>*)ignoreClasses
    authenticationClosure:(nullable Authentication* (^)(void))authenticationClosure;

// Another appName switches the recording to that application; its logs go to a folder of their own, and
// what the former ones left is uploaded. The same appName again changes nothing on disk. Without one events
// are not shown; a recording that runs goes on. Gives back the object that was set.
@property(class, nonatomic, strong, nullable) ApplicationInfo* appInfo;

// Categories of the host's own, by platform class name; unknown names are dropped. Replaces the former ones.
+ (void)categoryCustomTitles:(NSDictionary<NSString*, NSString*>*)titles;

// Installs automatic capture, unless isSwizzled; `configure` and setting the environment do so too.
+ (void)configureSwizzle;

// --- Logging
// An event is on disk when its call returns. What is dropped is dropped silently: events of an ignored
// category, without any attribute or custom data, or before the recording has started. Attributes go by
// record key ("pgName"); unknown keys, and values that are no texts, are dropped. A type given as a text is
// written as it is. Custom data that JSON does not know (NSDate, NaN, a key that is no text, more than 512
// levels) is left out as a whole, and its event kept; an empty dictionary is not the same as nil. What a call
// sets itself wins over what every event gets: "evtLclTimestamp", "evtId", "pgName" (the current screen),
// "pgPrnt" and "evtType".

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
// Which server uploads go to. A default one is made where there is none.
@property(class, nonatomic, strong, null_resettable) Environment* environment;

// --- The shared instance

@property(class, nonatomic, readonly) Tallyfoot* shared;

// The token of the credentials in use. Fatal before the recording has started.
@property(nonatomic, readonly) NSString* authenticationToken;

@end

NS_ASSUME_NONNULL_END
