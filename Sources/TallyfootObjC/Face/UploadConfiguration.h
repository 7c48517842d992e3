#pragma once

#import <Foundation/Foundation.h>
#import <TallyfootObjC/Face/Export.h>

NS_ASSUME_NONNULL_BEGIN

// When and where to upload.
TALLYFOOT_OBJC_EXPORT
@interface UploadConfiguration : NSObject {
@package
    void* _record;
}

// At least 10 seconds and 10 events; smaller values are raised.
- (instancetype)initWithSeconds:(NSInteger)seconds eventsCount:(NSInteger)eventsCount NS_DESIGNATED_INITIALIZER;

// Made once, on first use: 1800 seconds, 10 events, and the current environment's upload path of that moment.
@property(class, nonatomic, readonly) UploadConfiguration* defaultConfiguration;

// A fixed upload address on the default acceptance-test server.
@property(class, nonatomic, readonly) NSString* uploadPath;

@property(nonatomic, copy, nullable) NSString* uploadPath; // none: the environment's

- (instancetype)init TALLYFOOT_OBJC_UNAVAILABLE; // fatal
+ (instancetype)new TALLYFOOT_OBJC_UNAVAILABLE;  // fatal

@end

NS_ASSUME_NONNULL_END
