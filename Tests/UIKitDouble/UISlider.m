#import "UIKitPrivate.h"

BOOL UISliderContinueTracking(UISlider* slider, UITouch* touch, UIEvent* event)
    UIKIT_FRAME("-[UISlider continueTrackingWithTouch:withEvent:]");

@interface UISlider (Tracking)
- (BOOL)_follow:(UITouch*)touch;
@end

BOOL UISliderContinueTracking(UISlider* slider, UITouch* touch, UIEvent* event) {
    (void)event;
    BOOL hasChanged = [slider _follow:touch];
    if (hasChanged && slider.continuous) [slider sendActionsForControlEvents:UIControlEventValueChanged];
    return YES;
}

@implementation UISlider
@synthesize value = _value, minimumValue = _minimumValue, maximumValue = _maximumValue, continuous = _continuous;

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super
             initWithFrame:frame.size.width > 0 ? frame : CGRectMake(frame.origin.x, frame.origin.y, 200, 31)])) {
        _maximumValue = 1;
        _continuous = YES;
    }
    return self;
}

- (void)setValue:(float)value {
    _value = MIN(MAX(value, _minimumValue), _maximumValue);
}

- (void)setValue:(float)value animated:(BOOL)animated {
    (void)animated;
    self.value = value;
}

- (BOOL)_follow:(UITouch*)touch {
    CGFloat width = self.bounds.size.width;
    if (width <= 0) return NO;
    float former = _value;
    float share = (float)([touch locationInView:self].x / width);
    self.value = _minimumValue + share * (_maximumValue - _minimumValue);
    return _value < former || _value > former;
}

- (BOOL)continueTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event __attribute__((disable_tail_calls)) {
    return UISliderContinueTracking(self, touch, event);
}

- (void)endTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event {
    (void)event;
    [self _follow:touch];
    [self sendActionsForControlEvents:UIControlEventValueChanged | UIControlEventPrimaryActionTriggered];
}
@end
