#import <UIKit/UIRefreshControl.h>

@implementation UIRefreshControl
@synthesize refreshing = _refreshing;

- (void)beginRefreshing {
    _refreshing = YES;
}

- (void)endRefreshing {
    _refreshing = NO;
}
@end
