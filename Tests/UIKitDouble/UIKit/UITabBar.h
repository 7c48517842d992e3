#pragma once
#import "UITabBarItem.h"
#import "UIView.h"

@class UITabBar;

@protocol UITabBarDelegate <NSObject>
@optional
- (void)tabBar:(UITabBar*)tabBar didSelectItem:(UITabBarItem*)item;
@end

// Shows a private button for each item.
@interface UITabBar : UIView {
    NSArray* _items;
    UITabBarItem* _selectedItem;
    id<UITabBarDelegate> _delegate;
}
@property(nonatomic, copy) NSArray* items;
@property(nonatomic, retain) UITabBarItem* selectedItem;
@property(nonatomic, assign) id<UITabBarDelegate> delegate;
@end
