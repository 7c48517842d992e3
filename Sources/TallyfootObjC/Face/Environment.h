#pragma once

#import <Foundation/Foundation.h>
#import <TallyfootObjC/Face/Export.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSInteger, Endpoint) { EndpointDev = 0, EndpointUat = 1, EndpointProd = 2 };

// Which server uploads go to: the endpoint's base address comes from the property list "Environment"
// that the host ships in a framework. Any thread.
TALLYFOOT_OBJC_EXPORT
@interface Environment : NSObject {
@package
    void* _record;
}

- (instancetype)init NS_DESIGNATED_INITIALIZER; // nothing is read yet

// Reads the property list and composes the upload path. What cannot be resolved leaves the path as it
// was, silently. A number that is no endpoint counts as none.
- (void)setEndpoint:(Endpoint)endpoint;

// A whole address. "no such path" until an endpoint was resolved; one that is set stays until the next is.
@property(nonatomic, copy) NSString* uploadPath;

// The property list as it was last found; none before, and none when that file was unreadable. A date in it
// is a number, of seconds since the first of January 2001.
@property(nonatomic, readonly, nullable) NSDictionary<NSString*, id>* environmentDict;

@end

NS_ASSUME_NONNULL_END
