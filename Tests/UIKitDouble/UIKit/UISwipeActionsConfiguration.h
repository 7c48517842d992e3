#pragma once
#import "UIView.h"

typedef NS_ENUM(NSInteger, UIContextualActionStyle) {
    UIContextualActionStyleNormal,
    UIContextualActionStyleDestructive
};

@class UIContextualAction;
typedef void (^UIContextualActionHandler)(UIContextualAction* action, UIView* sourceView,
                                          void (^completionHandler)(BOOL actionPerformed));

@interface UIContextualAction : NSObject {
    UIContextualActionStyle _style;
    NSString* _title;
    UIContextualActionHandler _handler;
}
@property(nonatomic, readonly) UIContextualActionStyle style;
@property(nonatomic, copy) NSString* title;
@property(nonatomic, readonly) UIContextualActionHandler handler;
+ (instancetype)contextualActionWithStyle:(UIContextualActionStyle)style
                                    title:(NSString*)title
                                  handler:(UIContextualActionHandler)handler;
@end

@interface UISwipeActionsConfiguration : NSObject {
    NSArray* _actions;
}
@property(nonatomic, readonly, copy) NSArray* actions;
+ (instancetype)configurationWithActions:(NSArray*)actions;
@end
