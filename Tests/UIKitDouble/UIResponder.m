#import "UIKitPrivate.h"

@implementation UIResponder
- (UIResponder*)nextResponder {
    return nil;
}

- (BOOL)canBecomeFirstResponder {
    return NO;
}

- (BOOL)becomeFirstResponder {
    if ([self isFirstResponder]) return YES;
    UIResponder* former = [[UIApplication sharedApplication] _firstResponder];
    if (![self canBecomeFirstResponder] || (former && ![former resignFirstResponder])) return NO;
    [[UIApplication sharedApplication] _setFirstResponder:self];
    return YES;
}

- (BOOL)resignFirstResponder {
    if ([self isFirstResponder]) [[UIApplication sharedApplication] _setFirstResponder:nil];
    return YES;
}

- (BOOL)isFirstResponder {
    return [[UIApplication sharedApplication] _firstResponder] == self;
}

- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event {
    [[self nextResponder] touchesBegan:touches withEvent:event];
}
- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event {
    [[self nextResponder] touchesMoved:touches withEvent:event];
}
- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    [[self nextResponder] touchesEnded:touches withEvent:event];
}
- (void)touchesCancelled:(NSSet*)touches withEvent:(UIEvent*)event {
    [[self nextResponder] touchesCancelled:touches withEvent:event];
}
@end
