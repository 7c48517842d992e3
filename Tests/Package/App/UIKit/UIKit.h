#pragma once
#import <Foundation/Foundation.h>

// Somebody's own stand-in for UIKit, as small as can be.
typedef NSPoint CGPoint;
typedef NSSize CGSize;
typedef NSRect CGRect;

@class UIEvent;

@interface UIResponder : NSObject
@end

@interface UIScreen : NSObject {
    CGRect _bounds;
}
+ (UIScreen*)mainScreen;
@property(nonatomic) CGRect bounds;
@end

@interface UIApplication : UIResponder
+ (UIApplication*)sharedApplication;
- (BOOL)sendAction:(SEL)action to:(id)target from:(id)sender forEvent:(UIEvent*)event;
@end

@interface UIView : UIResponder
@end

@interface UIControl : UIView
@end

@interface UIButton : UIControl {
    NSString* _currentTitle;
}
@property(nonatomic, copy) NSString* currentTitle;
@end

@interface UIViewController : UIResponder {
    NSString* _title;
}
@property(nonatomic, copy) NSString* title;
- (void)viewWillAppear:(BOOL)animated;
- (void)viewWillDisappear:(BOOL)animated;
@end

@interface UIBarItem : NSObject
@end

@interface UIGestureRecognizer : NSObject
- (instancetype)initWithTarget:(id)target action:(SEL)action;
@end
