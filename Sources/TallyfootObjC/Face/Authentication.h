#pragma once

#import <Foundation/Foundation.h>
#import <TallyfootObjC/Face/Export.h>

NS_ASSUME_NONNULL_BEGIN

// The user's credentials, made by the host whenever the library asks. The token is never stored. Fixed once
// made: a subclass's own getters are not asked. nil, and what is no text, counts as an empty text. Any thread.
TALLYFOOT_OBJC_EXPORT
@interface Authentication : NSObject {
@package
    void* _record;
}

- (instancetype)initWithUserId:(NSString*)userId
           authenticationToken:(NSString*)authenticationToken
                 userLogOnTime:(nullable NSString*)userLogOnTime NS_DESIGNATED_INITIALIZER;

@property(nonatomic, readonly) NSString* userId;
@property(nonatomic, readonly) NSString* authenticationToken;
@property(nonatomic, readonly, nullable) NSString* userLogOnTime;

- (instancetype)init TALLYFOOT_OBJC_UNAVAILABLE; // fatal
+ (instancetype)new TALLYFOOT_OBJC_UNAVAILABLE;  // fatal

@end

NS_ASSUME_NONNULL_END
