#pragma once
#import "UIControl.h"

// A finger that moves up or down turns it by whole days.
@interface UIDatePicker : UIControl {
    NSDate* _date;
    CGFloat _startY;
}
@property(nonatomic, retain) NSDate* date;
- (void)setDate:(NSDate*)date animated:(BOOL)animated;
@end
