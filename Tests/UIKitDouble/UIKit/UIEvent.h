#pragma once
#import "UITouch.h"

@interface UIEvent : NSObject {
    NSSet* _allTouches;
    NSTimeInterval _timestamp;
}
@property(nonatomic, readonly) NSSet* allTouches;
@property(nonatomic, readonly) NSTimeInterval timestamp;
@end
