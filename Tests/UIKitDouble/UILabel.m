#import <UIKit/UILabel.h>

@implementation UILabel
@synthesize text = _text;

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super initWithFrame:frame])) self.userInteractionEnabled = NO;
    return self;
}

- (void)dealloc {
    [_text release];
    [super dealloc];
}
@end
