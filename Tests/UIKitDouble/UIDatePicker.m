#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat rowHeight = 32;
static const NSTimeInterval day = 24 * 60 * 60;

@implementation UIDatePicker
@synthesize date = _date;

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super
             initWithFrame:frame.size.height > 0 ? frame : CGRectMake(frame.origin.x, frame.origin.y, 320, 216)])) {
        _date = [[NSDate alloc] init];
    }
    return self;
}

- (void)dealloc {
    [_date release];
    [super dealloc];
}

- (void)setDate:(NSDate*)date animated:(BOOL)animated {
    (void)animated;
    self.date = date;
}

// A finger turns the wheel of days.
- (BOOL)beginTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event {
    (void)event;
    _startY = [touch locationInView:self].y;
    return YES;
}

- (void)endTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event {
    (void)event;
    double days = round((_startY - [touch locationInView:self].y) / rowHeight);
    if (fabs(days) < 1) return;
    self.date = [_date addTimeInterval:days * day];
    [self sendActionsForControlEvents:UIControlEventValueChanged | UIControlEventPrimaryActionTriggered];
}
@end
