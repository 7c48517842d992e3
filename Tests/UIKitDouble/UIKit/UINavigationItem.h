#pragma once
#import "UIBarButtonItem.h"

@class UISearchController;

@interface UINavigationItem : NSObject {
    NSString* _title;
    UIBarButtonItem* _leftBarButtonItem;
    UIBarButtonItem* _rightBarButtonItem;
    UISearchController* _searchController;
}
@property(nonatomic, copy) NSString* title;
@property(nonatomic, retain) UIBarButtonItem* leftBarButtonItem;
@property(nonatomic, retain) UIBarButtonItem* rightBarButtonItem;
@property(nonatomic, retain) UISearchController* searchController;
- (instancetype)initWithTitle:(NSString*)title;
@end
