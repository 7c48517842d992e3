#import "UIKitPrivate.h"

@implementation UIStepper
@synthesize value = _value, minimumValue = _minimumValue, maximumValue = _maximumValue, stepValue = _stepValue;

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self =
             [super initWithFrame:frame.size.width > 0 ? frame : CGRectMake(frame.origin.x, frame.origin.y, 94, 32)])) {
        _maximumValue = 100;
        _stepValue = 1;
    }
    return self;
}

- (void)setValue:(double)value {
    _value = MIN(MAX(value, _minimumValue), _maximumValue);
}

- (void)endTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event {
    (void)event;
    double former = _value;
    BOOL isRight = [touch locationInView:self].x >= self.bounds.size.width / 2;
    self.value = former + (isRight ? _stepValue : -_stepValue);
    BOOL hasChanged = _value < former || _value > former;
    if (hasChanged)
        [self sendActionsForControlEvents:UIControlEventValueChanged | UIControlEventPrimaryActionTriggered];
}
@end
