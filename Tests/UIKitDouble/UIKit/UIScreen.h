#pragma once
#import "UIGeometry.h"

@interface UIScreen : NSObject {
    CGRect _bounds;
}
+ (UIScreen*)mainScreen;
@property(nonatomic) CGRect bounds; // set by hand, as if the device were turned
@end
