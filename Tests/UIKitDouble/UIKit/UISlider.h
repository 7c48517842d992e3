#pragma once
#import "UIControl.h"

// The value follows the finger. A continuous slider sends its action at each move and once more when
// the finger is lifted; any other only then.
@interface UISlider : UIControl {
    float _value, _minimumValue, _maximumValue;
    BOOL _continuous;
}
@property(nonatomic) float value; // kept within the limits
@property(nonatomic) float minimumValue, maximumValue;
@property(nonatomic, getter=isContinuous) BOOL continuous;
- (void)setValue:(float)value animated:(BOOL)animated;
@end
