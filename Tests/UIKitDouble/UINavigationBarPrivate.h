#pragma once
#import <UIKit/UIKit.h>

@interface _UINavigationBarBackButton : UIControl
@end

@interface UINavigationBar (Private)
- (void)_setTopItem:(UINavigationItem*)item backTarget:(id)target action:(SEL)action;
@end
