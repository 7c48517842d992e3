#pragma once
#import "UIBarItem.h"
#import "UIView.h"

typedef NS_ENUM(NSInteger, UIBarButtonItemStyle) { UIBarButtonItemStylePlain, UIBarButtonItemStyleDone = 2 };

typedef NS_ENUM(NSInteger, UIBarButtonSystemItem) {
    UIBarButtonSystemItemDone,
    UIBarButtonSystemItemCancel,
    UIBarButtonSystemItemEdit,
    UIBarButtonSystemItemSave,
    UIBarButtonSystemItemAdd,
    UIBarButtonSystemItemFlexibleSpace,
    UIBarButtonSystemItemFixedSpace,
    UIBarButtonSystemItemCompose,
    UIBarButtonSystemItemReply,
    UIBarButtonSystemItemAction,
    UIBarButtonSystemItemOrganize,
    UIBarButtonSystemItemBookmarks,
    UIBarButtonSystemItemSearch,
    UIBarButtonSystemItemRefresh,
    UIBarButtonSystemItemStop,
    UIBarButtonSystemItemCamera,
    UIBarButtonSystemItemTrash
};

// A bar shows it as a button of its own and sends the item's action with the item as the sender.
@interface UIBarButtonItem : UIBarItem {
    id _target;
    SEL _action;
    UIBarButtonItemStyle _style;
    NSInteger _systemItem; // -1 for none
    UIView* _customView;
    UIView* _view; // what the bar shows
}
@property(nonatomic, assign) id target;
@property(nonatomic) SEL action;
@property(nonatomic) UIBarButtonItemStyle style;
@property(nonatomic, retain) UIView* customView;
- (instancetype)initWithTitle:(NSString*)title style:(UIBarButtonItemStyle)style target:(id)target action:(SEL)action;
- (instancetype)initWithImage:(id)image style:(UIBarButtonItemStyle)style target:(id)target action:(SEL)action;
- (instancetype)initWithBarButtonSystemItem:(UIBarButtonSystemItem)item target:(id)target action:(SEL)action;
- (instancetype)initWithCustomView:(UIView*)view;
@end
