#import "UIKitPrivate.h"

@implementation UIGestureEnvironment

+ (NSArray*)_recognizersForTouch:(UITouch*)touch {
    NSMutableArray* recognizers = [NSMutableArray array];
    for (UIView* view = [touch view]; view; view = [view superview]) {
        for (UIGestureRecognizer* recognizer in [view gestureRecognizers]) {
            id<UIGestureRecognizerDelegate> delegate = [recognizer delegate];
            BOOL wants = [recognizer isEnabled]
                         && (![delegate respondsToSelector:@selector(gestureRecognizer:shouldReceiveTouch:)] ||
                             [delegate gestureRecognizer:recognizer shouldReceiveTouch:touch]);
            if (wants) [recognizers addObject:recognizer];
        }
    }
    return recognizers;
}

+ (BOOL)_recognizer:(UIGestureRecognizer*)recognizer goesWith:(UIGestureRecognizer*)other {
    SEL question = @selector(gestureRecognizer:shouldRecognizeSimultaneouslyWithGestureRecognizer:);
    id<UIGestureRecognizerDelegate> delegate = [recognizer delegate];
    return [delegate respondsToSelector:question] &&
           [delegate gestureRecognizer:recognizer shouldRecognizeSimultaneouslyWithGestureRecognizer:other];
}

+ (BOOL)_mayBegin:(UIGestureRecognizer*)recognizer among:(NSArray*)recognizers {
    for (UIGestureRecognizer* other in recognizers) {
        if (other == recognizer || [other _isStateUntold] || ![other _isRecognizing]) continue;
        if (![self _recognizer:recognizer goesWith:other] && ![self _recognizer:other goesWith:recognizer]) return NO;
    }
    id<UIGestureRecognizerDelegate> delegate = [recognizer delegate];
    if ([delegate respondsToSelector:@selector(gestureRecognizerShouldBegin:)]
        && ![delegate gestureRecognizerShouldBegin:recognizer]) {
        return NO;
    }
    UITouch* touch = [[recognizer _followedTouches] lastObject];
    return [[touch view] gestureRecognizerShouldBegin:recognizer] &&
           [[recognizer view] gestureRecognizerShouldBegin:recognizer] && [recognizer _shouldBegin];
}

// What a recognizer takes as its own, the view loses.
+ (void)_settle:(UIGestureRecognizer*)recognizer
          among:(NSArray*)recognizers
    wasPossible:(BOOL)wasPossible
          event:(UIEvent*)event {
    if (![recognizer _isStateUntold]) return;
    if (wasPossible && [recognizer _isRecognizing] && ![self _mayBegin:recognizer among:recognizers]) {
        [recognizer _takeBackState];
        return;
    }
    NSArray* touches = [[[recognizer _followedTouches] copy] autorelease];
    BOOL takes = [recognizer cancelsTouchesInView] && [recognizer _isRecognizing];
    [recognizer _tellState];
    for (UITouch* touch in touches) {
        if (!takes || [touch _isTakenFromView]) continue;
        [touch _setTakenFromView];
        if ([touch phase] != UITouchPhaseBegan)
            [[touch view] touchesCancelled:[NSSet setWithObject:touch] withEvent:event];
    }
}

+ (void)_pass:(NSSet*)touches phase:(UITouchPhase)phase to:(id)receiver event:(UIEvent*)event {
    switch (phase) {
    case UITouchPhaseBegan: [receiver touchesBegan:touches withEvent:event]; break;
    case UITouchPhaseMoved: [receiver touchesMoved:touches withEvent:event]; break;
    case UITouchPhaseEnded: [receiver touchesEnded:touches withEvent:event]; break;
    case UITouchPhaseCancelled: [receiver touchesCancelled:touches withEvent:event]; break;
    case UITouchPhaseStationary: break;
    }
}

+ (void)_lead:(UIEvent*)event through:(UIGestureRecognizer*)recognizer among:(NSArray*)recognizers {
    BOOL wasPossible = [recognizer state] == UIGestureRecognizerStatePossible;
    [recognizer _timePassed:[event timestamp]];
    [self _settle:recognizer among:recognizers wasPossible:wasPossible event:event];
    for (UITouchPhase phase = UITouchPhaseBegan; phase <= UITouchPhaseCancelled; ++phase) {
        NSMutableSet* touches = [NSMutableSet set];
        for (UITouch* touch in [event allTouches]) {
            BOOL isFollowed = [[touch gestureRecognizers] indexOfObjectIdenticalTo:recognizer] != NSNotFound;
            if (isFollowed && [touch phase] == phase) [touches addObject:touch];
        }
        UIGestureRecognizerState state = [recognizer state];
        if ([touches count] == 0 || state >= UIGestureRecognizerStateEnded) continue;
        if (phase == UITouchPhaseBegan) [[recognizer _followedTouches] addObjectsFromArray:[touches allObjects]];
        [self _pass:touches phase:phase to:recognizer event:event];
        [self _settle:recognizer among:recognizers wasPossible:state == UIGestureRecognizerStatePossible event:event];
    }
}

+ (void)_deliverToViews:(UIEvent*)event {
    for (UITouch* touch in [[event allTouches] allObjects]) {
        if ([touch _isTakenFromView]) continue;
        [self _pass:[NSSet setWithObject:touch] phase:[touch phase] to:[touch view] event:event];
    }
}

+ (void)deliverEvent:(UIEvent*)event {
    NSMutableArray* recognizers = [NSMutableArray array];
    BOOL isOver = YES;
    for (UITouch* touch in [event allTouches]) {
        if ([touch phase] == UITouchPhaseBegan) [touch _setGestureRecognizers:[self _recognizersForTouch:touch]];
        if ([touch phase] < UITouchPhaseEnded) isOver = NO;
        for (UIGestureRecognizer* recognizer in [touch gestureRecognizers]) {
            if ([recognizers indexOfObjectIdenticalTo:recognizer] == NSNotFound) [recognizers addObject:recognizer];
        }
    }
    for (UIGestureRecognizer* recognizer in recognizers) [self _lead:event through:recognizer among:recognizers];
    [self _deliverToViews:event];
    if (!isOver) return;
    for (UIGestureRecognizer* recognizer in recognizers) {
        [[recognizer _followedTouches] removeAllObjects];
        [recognizer reset];
    }
}
@end
