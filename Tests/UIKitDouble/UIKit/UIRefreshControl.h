#pragma once
#import "UIControl.h"

// Sends its action when its scroll view was pulled down far enough.
@interface UIRefreshControl : UIControl {
    BOOL _refreshing;
}
@property(nonatomic, readonly, getter=isRefreshing) BOOL refreshing;
- (void)beginRefreshing;
- (void)endRefreshing;
@end
