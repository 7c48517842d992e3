#pragma once
#import "UIView.h"

@interface UIWindow : UIView {
    UIViewController* _rootViewController;
    BOOL _keyWindow;
}
// The controller appears when the window is shown, and at once in a window that is.
@property(nonatomic, retain) UIViewController* rootViewController;
@property(nonatomic, readonly, getter=isKeyWindow) BOOL keyWindow;
- (void)makeKeyAndVisible;
- (void)sendEvent:(UIEvent*)event;
@end
