#import "Storyboard.h"

static NSString* const runtimeAttributes = @"{"
                                            "  buy = { customName = \"Buy now\"; };"
                                            "  quantity = { customName = Qty; };"
                                            "  notifications = { customName = Push; };"
                                            "  pin = { logEnabled = NO; };"
                                            "  volume = { customName = Volume; };"
                                            "  \"picture.UISwipeGestureRecognizer\" = { customName = Gallery; };"
                                            "  PaymentPage = { logEnabled = NO; };"
                                            "}";

@implementation Storyboard

+ (id)_valueOf:(NSString*)text {
    if ([text isEqualToString:@"NO"] || [text isEqualToString:@"YES"])
        return [NSNumber numberWithBool:[text boolValue]];
    return text;
}

+ (void)_dress:(id)object as:(NSString*)name {
    NSDictionary* attributes = name ? [[runtimeAttributes propertyList] objectForKey:name] : nil;
    for (NSString* key in attributes) [object setValue:[self _valueOf:[attributes objectForKey:key]] forKeyPath:key];
}

+ (void)_dressViews:(UIView*)view {
    [self _dress:view as:view.accessibilityIdentifier];
    for (UIGestureRecognizer* recognizer in view.gestureRecognizers) {
        NSString* name =
            [NSString stringWithFormat:@"%@.%@", view.accessibilityIdentifier, NSStringFromClass([recognizer class])];
        [self _dress:recognizer as:name];
    }
    for (UIView* subview in view.subviews) [self _dressViews:subview];
}

+ (void)dress:(UIViewController*)controller {
    [self _dress:controller as:NSStringFromClass([controller class])];
    [self _dressViews:controller.view];
}
@end
