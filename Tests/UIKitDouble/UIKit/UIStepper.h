#pragma once
#import "UIControl.h"

// A touch on its right half adds a step, one on its left half takes one away.
@interface UIStepper : UIControl {
    double _value, _minimumValue, _maximumValue, _stepValue;
}
@property(nonatomic) double value; // kept within the limits
@property(nonatomic) double minimumValue, maximumValue, stepValue;
@end
