#pragma once

#import <Foundation/Foundation.h>
#import <TallyfootObjC/Face/Export.h>

NS_ASSUME_NONNULL_BEGIN

// When and where to upload. All but the upload path is fixed once made. Any thread.
TALLYFOOT_OBJC_EXPORT
@interface UploadConfiguration : NSObject {
@package
    void* _record;
}

// Uploads each time so many seconds have passed, and when more than so many events were recorded. At least
// 10 of each; smaller values are raised. Files are closed, and uploaded, at 10 MiB. More seconds than 64 bits
// hold milliseconds of are fatal when the recording starts.
- (instancetype)initWithSeconds:(NSInteger)seconds eventsCount:(NSInteger)eventsCount NS_DESIGNATED_INITIALIZER;

// Made once, on first use: 1800 seconds, 10 events, files of 5 MiB, and the current environment's upload path
// of that moment.
@property(class, nonatomic, readonly) UploadConfiguration* defaultConfiguration;

// A fixed upload address on the default acceptance-test server.
@property(class, nonatomic, readonly) NSString* uploadPath;

@property(nonatomic, copy, nullable) NSString* uploadPath; // http or https; none: the environment's

- (instancetype)init TALLYFOOT_OBJC_UNAVAILABLE; // fatal
+ (instancetype)new TALLYFOOT_OBJC_UNAVAILABLE;  // fatal

@end

NS_ASSUME_NONNULL_END
