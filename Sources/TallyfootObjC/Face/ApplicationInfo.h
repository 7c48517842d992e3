#pragma once

#import <Foundation/Foundation.h>
#import <TallyfootObjC/Face/Export.h>

NS_ASSUME_NONNULL_BEGIN

// Who the host application is. Fixed once made: a subclass's own getters are not asked. nil, and what is no
// text, counts as an empty text. Any thread.
TALLYFOOT_OBJC_EXPORT
@interface ApplicationInfo : NSObject <NSCoding> {
@package
    void* _record;
}

// Without a name (nil) the main bundle's "CFBundleName" is used; an empty one is a name.
- (instancetype)initWithAppName:(nullable NSString*)appName
                          appId:(NSString*)appId
                        bizArea:(NSString*)bizArea
                      bizAreaId:(NSString*)bizAreaId NS_DESIGNATED_INITIALIZER;

// Archived by key, under the properties' own names. Decoding is fatal without a text for each of "appId",
// "bizArea" and "bizAreaId"; without one for "appName" it takes the bundle's name.
- (nullable instancetype)initWithCoder:(NSCoder*)coder NS_DESIGNATED_INITIALIZER;

@property(nonatomic, readonly) NSString* appName;
@property(nonatomic, readonly) NSString* appId;
@property(nonatomic, readonly) NSString* bizArea;
@property(nonatomic, readonly) NSString* bizAreaId;

- (instancetype)init TALLYFOOT_OBJC_UNAVAILABLE; // fatal
+ (instancetype)new TALLYFOOT_OBJC_UNAVAILABLE;  // fatal

@end

NS_ASSUME_NONNULL_END
