#pragma once
#import "UIView.h"

typedef NS_OPTIONS(NSUInteger, UIControlEvents) {
    UIControlEventTouchDown = 1 << 0,
    UIControlEventTouchDragInside = 1 << 2,
    UIControlEventTouchDragOutside = 1 << 3,
    UIControlEventTouchUpInside = 1 << 6,
    UIControlEventTouchUpOutside = 1 << 7,
    UIControlEventTouchCancel = 1 << 8,
    UIControlEventValueChanged = 1 << 12,
    UIControlEventPrimaryActionTriggered = 1 << 13,
    UIControlEventEditingDidBegin = 1 << 16,
    UIControlEventEditingChanged = 1 << 17,
    UIControlEventEditingDidEnd = 1 << 18,
    UIControlEventEditingDidEndOnExit = 1 << 19,
    UIControlEventAllEvents = 0xFFFFFFFF
};

// Follows a touch and sends each action through the application object.
@interface UIControl : UIView {
    NSMutableArray* _targetActions;
    BOOL _enabled;
    BOOL _selected;
    BOOL _tracking;
    BOOL _touchInside;
}
@property(nonatomic, getter=isEnabled) BOOL enabled;
@property(nonatomic, getter=isSelected) BOOL selected;
@property(nonatomic, readonly, getter=isTracking) BOOL tracking;
@property(nonatomic, readonly, getter=isTouchInside) BOOL touchInside;

- (void)addTarget:(id)target action:(SEL)action forControlEvents:(UIControlEvents)events; // target not retained
- (void)removeTarget:(id)target action:(SEL)action forControlEvents:(UIControlEvents)events;
- (NSSet*)allTargets;
- (NSArray*)actionsForTarget:(id)target forControlEvent:(UIControlEvents)event;
- (void)sendAction:(SEL)action to:(id)target forEvent:(UIEvent*)event;
- (void)sendActionsForControlEvents:(UIControlEvents)events;

- (BOOL)beginTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event;
- (BOOL)continueTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event;
- (void)endTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event;
- (void)cancelTrackingWithEvent:(UIEvent*)event;
@end
