#pragma once
#import "UIViewController.h"

typedef NS_ENUM(NSInteger, UIAlertActionStyle) {
    UIAlertActionStyleDefault,
    UIAlertActionStyleCancel,
    UIAlertActionStyleDestructive
};
typedef NS_ENUM(NSInteger, UIAlertControllerStyle) { UIAlertControllerStyleActionSheet, UIAlertControllerStyleAlert };

@interface UIAlertAction : NSObject {
    NSString* _title;
    UIAlertActionStyle _style;
    void (^_handler)(UIAlertAction* action);
}
@property(nonatomic, readonly) NSString* title;
@property(nonatomic, readonly) UIAlertActionStyle style;
+ (instancetype)actionWithTitle:(NSString*)title
                          style:(UIAlertActionStyle)style
                        handler:(void (^)(UIAlertAction* action))handler;
@end

// Its actions are rows of one group view; a press on the group picks the row under the finger when it
// is lifted, and the alert goes before the action's handler runs.
@interface UIAlertController : UIViewController {
    NSString* _message;
    UIAlertControllerStyle _preferredStyle;
    NSMutableArray* _actions;
}
@property(nonatomic, copy) NSString* message;
@property(nonatomic, readonly) UIAlertControllerStyle preferredStyle;
@property(nonatomic, readonly) NSArray* actions;
+ (instancetype)alertControllerWithTitle:(NSString*)title
                                 message:(NSString*)message
                          preferredStyle:(UIAlertControllerStyle)style;
- (void)addAction:(UIAlertAction*)action;
@end
