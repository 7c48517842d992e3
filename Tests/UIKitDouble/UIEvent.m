#import "UIKitPrivate.h"

@implementation UIEvent
@synthesize allTouches = _allTouches, timestamp = _timestamp;

- (instancetype)_initWithTouches:(NSSet*)touches time:(NSTimeInterval)time {
    if ((self = [super init])) {
        _allTouches = [touches copy];
        _timestamp = time;
    }
    return self;
}

- (void)dealloc {
    [_allTouches release];
    [super dealloc];
}
@end
