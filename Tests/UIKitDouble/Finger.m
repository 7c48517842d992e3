#import "Finger.h"

#import "UIKitPrivate.h"

#include <math.h>

static const NSTimeInterval frameTime = 1.0 / 60;
static const NSUInteger dragSteps = 6;
static NSTimeInterval clockTime = 1000;

@implementation Finger

+ (NSTimeInterval)now {
    return clockTime;
}

+ (void)wait:(NSTimeInterval)seconds {
    clockTime += seconds;
}

+ (CGPoint)_middleOf:(UIView*)view {
    CGRect bounds = view.bounds;
    return CGPointMake(NSMidX(bounds), NSMidY(bounds));
}

+ (UITouch*)_downOn:(UIView*)view at:(CGPoint)point {
    for (UIView* ancestor = view; ancestor; ancestor = ancestor.superview) {
        if (ancestor.hidden || !ancestor.userInteractionEnabled) return nil;
    }
    UIView* hit = [view hitTest:point withEvent:nil];
    if (!hit) hit = view;
    CGPoint inside = [hit convertPoint:point fromView:view];
    return [[[UITouch alloc] _initInView:hit at:inside time:clockTime] autorelease];
}

+ (void)_send:(NSSet*)touches {
    UIEvent* event = [[[UIEvent alloc] _initWithTouches:touches time:clockTime] autorelease]; // a target may raise
    [[UIApplication sharedApplication] sendEvent:event];
    clockTime += frameTime;
}

+ (void)_send:(UITouch*)touch at:(CGPoint)point phase:(UITouchPhase)phase {
    [touch _moveTo:point inView:nil phase:phase time:clockTime];
    [self _send:[NSSet setWithObject:touch]];
}

// The view may scroll or go on the way; the hand knows only where it is itself.
+ (void)_down:(UIView*)view at:(CGPoint)start during:(void (^)(UITouch* touch, CGPoint origin))motion {
    @autoreleasepool {
        [[view retain] autorelease];
        UITouch* touch = [self _downOn:view at:start];
        if (!touch) return;
        [self _send:[NSSet setWithObject:touch]];
        motion(touch, [touch _location]);
    }
    clockTime += 0.2;
}

+ (void)tap:(UIView*)view {
    [self tap:view at:[self _middleOf:view]];
}

+ (void)tap:(UIView*)view at:(CGPoint)point {
    [self press:view at:point for:0.05];
}

+ (void)press:(UIView*)view for:(NSTimeInterval)seconds {
    [self press:view at:[self _middleOf:view] for:seconds];
}

+ (void)press:(UIView*)view at:(CGPoint)point for:(NSTimeInterval)seconds {
    [self _down:view
             at:point
         during:^(UITouch* touch, CGPoint origin) {
           clockTime += seconds;
           [self _send:touch at:origin phase:UITouchPhaseStationary];
           [self _send:touch at:origin phase:UITouchPhaseEnded];
         }];
}

+ (void)_move:(UIView*)view from:(CGPoint)start by:(CGSize)distance steps:(NSUInteger)steps rest:(NSTimeInterval)rest {
    [self _down:view
             at:start
         during:^(UITouch* touch, CGPoint origin) {
           CGPoint point = origin;
           for (NSUInteger step = 1; step <= steps; ++step) {
               CGFloat share = (CGFloat)step / (CGFloat)steps;
               point = CGPointMake(origin.x + distance.width * share, origin.y + distance.height * share);
               [self _send:touch at:point phase:UITouchPhaseMoved];
           }
           clockTime += rest;
           [self _send:touch at:point phase:UITouchPhaseEnded];
         }];
}

+ (void)drag:(UIView*)view by:(CGSize)distance {
    [self _move:view from:[self _middleOf:view] by:distance steps:dragSteps rest:0.3];
}

+ (void)drag:(UIView*)view from:(CGPoint)start to:(CGPoint)end steps:(NSUInteger)steps {
    [self _move:view from:start by:CGSizeMake(end.x - start.x, end.y - start.y) steps:steps rest:0.3];
}

+ (void)flick:(UIView*)view by:(CGSize)distance {
    [self flick:view from:[self _middleOf:view] by:distance];
}

+ (void)flick:(UIView*)view from:(CGPoint)start by:(CGSize)distance {
    [self _move:view from:start by:distance steps:dragSteps rest:0];
}

+ (void)_twoOn:(UIView*)view distances:(CGFloat)from to:(CGFloat)to angles:(CGFloat)radians {
    @autoreleasepool {
        [[view retain] autorelease];
        CGPoint middle = [self _middleOf:view];
        UITouch* one = [self _downOn:view at:CGPointMake(middle.x - from / 2, middle.y)];
        UITouch* two = [self _downOn:view at:CGPointMake(middle.x + from / 2, middle.y)];
        if (!one || !two) return;
        NSSet* both = [NSSet setWithObjects:one, two, nil];
        [self _send:both];
        for (NSUInteger step = 1; step <= dragSteps + 1; ++step) {
            UITouchPhase phase = step <= dragSteps ? UITouchPhaseMoved : UITouchPhaseEnded;
            CGFloat share = (CGFloat)MIN(step, dragSteps) / (CGFloat)dragSteps;
            CGFloat radius = (from + (to - from) * share) / 2;
            CGFloat x = radius * cos(radians * share), y = radius * sin(radians * share);
            [one _moveTo:CGPointMake(middle.x - x, middle.y - y) inView:view phase:phase time:clockTime];
            [two _moveTo:CGPointMake(middle.x + x, middle.y + y) inView:view phase:phase time:clockTime];
            [self _send:both];
        }
    }
    clockTime += 0.2;
}

+ (void)pinch:(UIView*)view from:(CGFloat)start to:(CGFloat)end {
    [self _twoOn:view distances:start to:end angles:0];
}

+ (void)turn:(UIView*)view by:(CGFloat)radians {
    [self _twoOn:view distances:100 to:100 angles:radians];
}

+ (void)beginAndCancel:(UIView*)view {
    [self _down:view
             at:[self _middleOf:view]
         during:^(UITouch* touch, CGPoint origin) {
           [self _send:touch at:origin phase:UITouchPhaseCancelled];
         }];
}
@end
