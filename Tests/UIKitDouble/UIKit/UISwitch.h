#pragma once
#import "UIControl.h"

// Its inner view has the recognizers that toggle it.
@interface UISwitch : UIControl {
    BOOL _on;
}
@property(nonatomic, getter=isOn) BOOL on;
- (void)setOn:(BOOL)on animated:(BOOL)animated;
@end
