#pragma once
#import "UISearchBar.h"
#import "UIViewController.h"

@class UISearchController;

@protocol UISearchResultsUpdating <NSObject>
- (void)updateSearchResultsForSearchController:(UISearchController*)searchController;
@end

// Becomes active when its bar is edited. The updater hears of every change of the text and of the state.
@interface UISearchController : UIViewController {
    UISearchBar* _searchBar;
    UIViewController* _searchResultsController;
    id<UISearchResultsUpdating> _searchResultsUpdater;
    BOOL _active;
}
@property(nonatomic, readonly) UISearchBar* searchBar;
@property(nonatomic, readonly) UIViewController* searchResultsController;
@property(nonatomic, assign) id<UISearchResultsUpdating> searchResultsUpdater;
@property(nonatomic, getter=isActive) BOOL active;
- (instancetype)initWithSearchResultsController:(UIViewController*)controller;
@end
