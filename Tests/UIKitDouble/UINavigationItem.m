#import <UIKit/UINavigationItem.h>
#import <UIKit/UISearchController.h>

@implementation UINavigationItem
@synthesize title = _title, leftBarButtonItem = _leftBarButtonItem, rightBarButtonItem = _rightBarButtonItem;
@synthesize searchController = _searchController;

- (instancetype)initWithTitle:(NSString*)title {
    if ((self = [super init])) _title = [title copy];
    return self;
}

- (void)dealloc {
    [_title release];
    [_leftBarButtonItem release];
    [_rightBarButtonItem release];
    [_searchController release];
    [super dealloc];
}
@end
