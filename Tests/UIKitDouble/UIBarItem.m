#import <UIKit/UIBarItem.h>

@implementation UIBarItem
@synthesize title = _title, image = _image, tag = _tag, enabled = _enabled;
@synthesize accessibilityIdentifier = _accessibilityIdentifier;

- (instancetype)init {
    if ((self = [super init])) _enabled = YES;
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [self init])) {
        if ([coder allowsKeyedCoding]) _title = [[coder decodeObjectForKey:@"UITitle"] copy];
    }
    return self;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    if ([coder allowsKeyedCoding]) [coder encodeObject:_title forKey:@"UITitle"];
}

- (void)dealloc {
    [_title release];
    [_image release];
    [_accessibilityIdentifier release];
    [super dealloc];
}
@end
