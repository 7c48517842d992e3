#import "ProductListPage.h"

#import "ProductPage.h"
#import "Storyboard.h"

@implementation ProductListPage

- (instancetype)initWithBasket:(Basket*)basket {
    if ((self = [super init])) {
        self.title = @"Shop";
        _basket = [basket retain];
        _products = [[Catalogue products] copy];
    }
    return self;
}

- (void)dealloc {
    _search.searchResultsUpdater = nil;
    _search.searchBar.delegate = nil;
    [_basket release];
    [_products release];
    [_table release];
    [_search release];
    [super dealloc];
}

- (void)viewDidLoad {
    [super viewDidLoad];
    _search = [[UISearchController alloc] initWithSearchResultsController:nil];
    _search.searchBar.accessibilityIdentifier = @"search";
    _search.searchBar.showsBookmarkButton = YES;
    _search.searchBar.showsSearchResultsButton = YES;
    _search.searchResultsUpdater = self;
    _search.searchBar.delegate = self;
    [self.view addSubview:_search.searchBar];
    _table = [[UITableView alloc] initWithFrame:CGRectMake(0, 44, 320, 396)];
    _table.accessibilityIdentifier = @"products";
    _table.dataSource = self;
    _table.delegate = self;
    _table.refreshControl = [[[UIRefreshControl alloc] init] autorelease];
    [_table.refreshControl addTarget:self action:@selector(refresh:) forControlEvents:UIControlEventValueChanged];
    [self.view addSubview:_table];
    [Storyboard dress:self];
}

- (void)refresh:(UIRefreshControl*)control {
    [_table reloadData];
    [control endRefreshing];
}

- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section {
    (void)tableView;
    (void)section;
    return (NSInteger)[_products count];
}

- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath {
    UITableViewCell* cell = [tableView dequeueReusableCellWithIdentifier:@"Product"];
    if (!cell) {
        cell = [[[UITableViewCell alloc] initWithStyle:UITableViewCellStyleDefault
                                       reuseIdentifier:@"Product"] autorelease];
        cell.accessoryType = UITableViewCellAccessoryDetailDisclosureButton;
        UIGestureRecognizer* press = [[UILongPressGestureRecognizer alloc] initWithTarget:self action:@selector(peek:)];
        [cell addGestureRecognizer:press];
        [press release];
    }
    cell.textLabel.text = [[_products objectAtIndex:(NSUInteger)[indexPath row]] name];
    return cell;
}

- (void)tableView:(UITableView*)tableView didSelectRowAtIndexPath:(NSIndexPath*)indexPath {
    (void)tableView;
    Product* product = [_products objectAtIndex:(NSUInteger)[indexPath row]];
    ProductPage* page = [[[ProductPage alloc] initWithProduct:product basket:_basket] autorelease];
    [self.navigationController pushViewController:page animated:YES];
}

- (void)tableView:(UITableView*)tableView accessoryButtonTappedForRowWithIndexPath:(NSIndexPath*)indexPath {
    [tableView deselectRowAtIndexPath:indexPath animated:YES];
}

- (void)peek:(UILongPressGestureRecognizer*)recognizer {
    (void)recognizer;
}

- (void)updateSearchResultsForSearchController:(UISearchController*)searchController {
    [_products release];
    _products = [[Catalogue productsMatching:searchController.searchBar.text] copy];
    [_table reloadData];
}

- (void)searchBarSearchButtonClicked:(UISearchBar*)searchBar {
    [searchBar resignFirstResponder];
}
@end
