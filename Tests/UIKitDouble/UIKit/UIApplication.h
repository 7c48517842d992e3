#pragma once
#import "UIResponder.h"

@class UIWindow;

@protocol UIApplicationDelegate <NSObject>
@optional
- (BOOL)application:(id)application didFinishLaunchingWithOptions:(NSDictionary*)options;
@end

@interface UIApplication : UIResponder {
    id<UIApplicationDelegate> _delegate;
    UIWindow* _keyWindow;
    UIResponder* _firstResponder;
}
+ (UIApplication*)sharedApplication;
@property(nonatomic, assign) id<UIApplicationDelegate> delegate;
@property(nonatomic, readonly) UIWindow* keyWindow;
- (void)sendEvent:(UIEvent*)event;
// Without a target the action goes along the responders from the first one, or from the sender on, to
// the first that has the method. Answers whether anybody took it.
- (BOOL)sendAction:(SEL)action to:(id)target from:(id)sender forEvent:(UIEvent*)event;
@end
