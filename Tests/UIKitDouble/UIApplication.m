#import "UIKitPrivate.h"

@implementation UIApplication
@synthesize delegate = _delegate, keyWindow = _keyWindow;

+ (UIApplication*)sharedApplication {
    static UIApplication* shared;
    if (!shared) shared = [[UIApplication alloc] init];
    return shared;
}

- (UIResponder*)_firstResponder {
    return _firstResponder;
}

- (void)_setFirstResponder:(UIResponder*)responder {
    _firstResponder = responder;
}

- (void)_setKeyWindow:(UIWindow*)window {
    _keyWindow = window;
}

// A view that is in no window gets its touches too: much can be tried without one.
- (void)sendEvent:(UIEvent*)event {
    UIWindow* window = [(UITouch*)[[event allTouches] anyObject] window];
    if (window) {
        [window sendEvent:event];
    } else {
        [UIGestureEnvironment deliverEvent:event];
    }
}

- (id)_takerOfAction:(SEL)action from:(id)sender {
    UIResponder* responder = _firstResponder;
    if (!responder && [sender isKindOfClass:[UIResponder class]]) responder = sender;
    for (; responder; responder = [responder nextResponder]) {
        if ([responder respondsToSelector:action]) return responder;
    }
    if ([self respondsToSelector:action]) return self;
    return [_delegate respondsToSelector:action] ? _delegate : nil;
}

// An action's name says what it takes: nothing, its sender, or the event, too.
static NSUInteger argumentCount(SEL action) {
    NSUInteger count = 0;
    for (const char* name = sel_getName(action); *name; ++name) count += *name == ':';
    return count;
}

- (BOOL)sendAction:(SEL)action to:(id)target from:(id)sender forEvent:(UIEvent*)event {
    if (!action) return NO;
    id taker = target ? target : [self _takerOfAction:action from:sender];
    if (!taker) return NO;
    switch (argumentCount(action)) {
    case 0: [taker performSelector:action]; break;
    case 1: [taker performSelector:action withObject:sender]; break;
    case 2: [taker performSelector:action withObject:sender withObject:event]; break;
    default: [taker doesNotRecognizeSelector:action]; return NO;
    }
    return YES;
}
@end
