#pragma once
#import "UIScrollView.h"
#import "UISwipeActionsConfiguration.h"
#import "UITableViewCell.h"

@class UITableView;

typedef NS_ENUM(NSInteger, UITableViewStyle) { UITableViewStylePlain, UITableViewStyleGrouped };

@protocol UITableViewDataSource <NSObject>
- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section;
- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath;
@optional
- (NSInteger)numberOfSectionsInTableView:(UITableView*)tableView;
@end

@protocol UITableViewDelegate <UIScrollViewDelegate>
@optional
- (NSIndexPath*)tableView:(UITableView*)tableView willSelectRowAtIndexPath:(NSIndexPath*)indexPath;
- (void)tableView:(UITableView*)tableView didSelectRowAtIndexPath:(NSIndexPath*)indexPath;
- (void)tableView:(UITableView*)tableView accessoryButtonTappedForRowWithIndexPath:(NSIndexPath*)indexPath;
- (UISwipeActionsConfiguration*)tableView:(UITableView*)tableView
    trailingSwipeActionsConfigurationForRowAtIndexPath:(NSIndexPath*)indexPath;
@end

// Rows of one height below one another. All rows that intersect the bounds have cells, made when they
// are needed; those that leave the bounds go to the reuse queue. A touch that ends on a row selects it.
@interface UITableView : UIScrollView {
    id<UITableViewDataSource> _dataSource;
    UITableViewStyle _style;
    NSMutableDictionary* _visibleCells;  // index path -> cell
    NSMutableDictionary* _reusableCells; // identifier -> cells
    NSMutableDictionary* _cellClasses;
    NSMutableArray* _rowCounts; // of each section
    CGFloat _rowHeight;
    NSIndexPath* _indexPathForSelectedRow;
    NSIndexPath* _swipedIndexPath;
    BOOL _isLoaded;
}
@property(nonatomic, assign) id<UITableViewDelegate> delegate;
@property(nonatomic, assign) id<UITableViewDataSource> dataSource;
@property(nonatomic) CGFloat rowHeight;
@property(nonatomic, readonly) NSIndexPath* indexPathForSelectedRow;
- (instancetype)initWithFrame:(CGRect)frame style:(UITableViewStyle)style;
- (void)reloadData;
- (NSInteger)numberOfSections;
- (NSInteger)numberOfRowsInSection:(NSInteger)section;
- (void)registerClass:(Class)cellClass forCellReuseIdentifier:(NSString*)identifier;
- (id)dequeueReusableCellWithIdentifier:(NSString*)identifier;
- (id)dequeueReusableCellWithIdentifier:(NSString*)identifier forIndexPath:(NSIndexPath*)indexPath;
- (UITableViewCell*)cellForRowAtIndexPath:(NSIndexPath*)indexPath; // nil for a row that is not visible
- (NSIndexPath*)indexPathForCell:(UITableViewCell*)cell;
- (NSIndexPath*)indexPathForRowAtPoint:(CGPoint)point;
- (CGRect)rectForRowAtIndexPath:(NSIndexPath*)indexPath;
- (NSArray*)visibleCells;
- (NSArray*)indexPathsForVisibleRows;
// Without a word to the delegate.
- (void)selectRowAtIndexPath:(NSIndexPath*)indexPath animated:(BOOL)animated scrollPosition:(NSInteger)position;
- (void)deselectRowAtIndexPath:(NSIndexPath*)indexPath animated:(BOOL)animated;
- (void)deleteRowsAtIndexPaths:(NSArray*)indexPaths withRowAnimation:(NSInteger)animation;
@end
