#import "UIKitPrivate.h"

@implementation UISearchController
@synthesize searchBar = _searchBar, searchResultsController = _searchResultsController;
@synthesize searchResultsUpdater = _searchResultsUpdater, active = _active;

- (instancetype)initWithSearchResultsController:(UIViewController*)controller {
    if ((self = [super initWithNibName:nil bundle:nil])) {
        _searchResultsController = [controller retain];
        _searchBar = [[UISearchBar alloc] initWithFrame:CGRectZero];
        [_searchBar _setController:self];
    }
    return self;
}

- (instancetype)initWithNibName:(NSString*)name bundle:(NSBundle*)bundle {
    (void)name;
    (void)bundle;
    return [self initWithSearchResultsController:nil];
}

- (void)dealloc {
    [_searchBar _setController:nil];
    [_searchBar release];
    [_searchResultsController release];
    [super dealloc];
}

// It is a controller that is shown, as far as appearance goes. Leaving it empties the field.
- (void)setActive:(BOOL)active {
    if (active == _active) return;
    _active = active;
    _searchBar.showsCancelButton = active;
    [self _appear:active];
    if (!active) {
        _searchBar.text = @"";
        [_searchBar resignFirstResponder];
    }
    [self _update];
}

- (void)_update {
    [_searchResultsUpdater updateSearchResultsForSearchController:self];
}
@end
