#pragma once
#import "UITextField.h"

@class UISearchBar, UISearchController;

@protocol UISearchBarDelegate <NSObject>
@optional
- (void)searchBarTextDidBeginEditing:(UISearchBar*)searchBar;
- (void)searchBarTextDidEndEditing:(UISearchBar*)searchBar;
- (void)searchBar:(UISearchBar*)searchBar textDidChange:(NSString*)text;
- (void)searchBarSearchButtonClicked:(UISearchBar*)searchBar;
- (void)searchBarBookmarkButtonClicked:(UISearchBar*)searchBar;
- (void)searchBarCancelButtonClicked:(UISearchBar*)searchBar;
- (void)searchBarResultsListButtonClicked:(UISearchBar*)searchBar;
@end

// Its own buttons send it internal actions; its delegate hears of them afterwards.
@interface UISearchBar : UIView <UITextFieldDelegate> {
    id<UISearchBarDelegate> _delegate;
    UISearchController* _controller; // not retained
    UITextField* _searchTextField;
    UIControl* _bookmarkButton;
    UIControl* _resultsListButton;
    UIControl* _clearButton;
    UIControl* _cancelButton;
}
@property(nonatomic, assign) id<UISearchBarDelegate> delegate;
@property(nonatomic, copy) NSString* text;
@property(nonatomic, copy) NSString* placeholder;
@property(nonatomic, readonly) UITextField* searchTextField;
@property(nonatomic) BOOL showsCancelButton;
@property(nonatomic) BOOL showsBookmarkButton;
@property(nonatomic) BOOL showsSearchResultsButton;
@end
