#import "Probe.h"

@implementation Probe
+ (Probe*)probe {
    Probe* probe = [[[self alloc] init] autorelease];
    probe->heard = [[NSMutableArray alloc] init];
    probe->rows = 3;
    return probe;
}
- (void)dealloc {
    [heard release];
    [swipeActions release];
    [super dealloc];
}
- (void)hear:(NSString*)format, ... {
    va_list arguments;
    va_start(arguments, format);
    [heard addObject:[[[NSString alloc] initWithFormat:format arguments:arguments] autorelease]];
    va_end(arguments);
}
- (void)action:(id)sender {
    [self hear:@"action from %@", NSStringFromClass([sender class])];
}
- (void)action:(id)sender forEvent:(UIEvent*)event {
    [self hear:@"action from %@%s", NSStringFromClass([sender class]), event ? " with an event" : ""];
}
- (void)bareAction {
    [self hear:@"bare action"];
}
- (void)recognized:(UIGestureRecognizer*)recognizer {
    [self hear:@"%ld", static_cast<long>(recognizer.state)];
}
- (BOOL)gestureRecognizerShouldBegin:(UIGestureRecognizer*)recognizer {
    (void)recognizer;
    return !refusesGestures;
}
- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section {
    (void)tableView;
    (void)section;
    return rows;
}
- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath {
    UITableViewCell* cell = [tableView dequeueReusableCellWithIdentifier:@"Cell"];
    if (!cell) {
        cell = [[[UITableViewCell alloc] initWithStyle:UITableViewCellStyleDefault
                                       reuseIdentifier:@"Cell"] autorelease];
    }
    cell.textLabel.text = [NSString stringWithFormat:@"Row %ld", static_cast<long>([indexPath row])];
    return cell;
}
- (void)tableView:(UITableView*)tableView didSelectRowAtIndexPath:(NSIndexPath*)indexPath {
    (void)tableView;
    [self hear:@"row %ld", static_cast<long>([indexPath row])];
}
- (void)tableView:(UITableView*)tableView accessoryButtonTappedForRowWithIndexPath:(NSIndexPath*)indexPath {
    (void)tableView;
    [self hear:@"accessory %ld", static_cast<long>([indexPath row])];
}
- (UISwipeActionsConfiguration*)tableView:(UITableView*)tableView
    trailingSwipeActionsConfigurationForRowAtIndexPath:(NSIndexPath*)indexPath {
    (void)tableView;
    (void)indexPath;
    return swipeActions;
}
- (NSInteger)collectionView:(UICollectionView*)collectionView numberOfItemsInSection:(NSInteger)section {
    (void)collectionView;
    (void)section;
    return rows;
}
- (UICollectionViewCell*)collectionView:(UICollectionView*)collectionView
                 cellForItemAtIndexPath:(NSIndexPath*)indexPath {
    return [collectionView dequeueReusableCellWithReuseIdentifier:@"Item" forIndexPath:indexPath];
}
- (void)collectionView:(UICollectionView*)collectionView didSelectItemAtIndexPath:(NSIndexPath*)indexPath {
    (void)collectionView;
    [self hear:@"item %ld", static_cast<long>([indexPath item])];
}
- (NSInteger)numberOfComponentsInPickerView:(UIPickerView*)pickerView {
    (void)pickerView;
    return 2;
}
- (NSInteger)pickerView:(UIPickerView*)pickerView numberOfRowsInComponent:(NSInteger)component {
    (void)pickerView;
    (void)component;
    return 20;
}
- (void)pickerView:(UIPickerView*)pickerView didSelectRow:(NSInteger)row inComponent:(NSInteger)component {
    (void)pickerView;
    [self hear:@"picked %ld in %ld", static_cast<long>(row), static_cast<long>(component)];
}
- (void)tabBar:(UITabBar*)tabBar didSelectItem:(UITabBarItem*)item {
    (void)tabBar;
    [self hear:@"tab %@", item.title];
}
- (void)scrollViewDidEndDragging:(UIScrollView*)scrollView willDecelerate:(BOOL)decelerate {
    (void)scrollView;
    [self hear:@"lifted%s", decelerate ? " moving" : ""];
}
- (void)scrollViewDidEndDecelerating:(UIScrollView*)scrollView {
    (void)scrollView;
    [self hear:@"at rest"];
}
- (void)searchBar:(UISearchBar*)searchBar textDidChange:(NSString*)text {
    (void)searchBar;
    [self hear:@"text '%@'", text];
}
- (void)searchBarSearchButtonClicked:(UISearchBar*)searchBar {
    (void)searchBar;
    [self hear:@"search"];
}
- (void)searchBarBookmarkButtonClicked:(UISearchBar*)searchBar {
    (void)searchBar;
    [self hear:@"bookmark"];
}
- (void)searchBarCancelButtonClicked:(UISearchBar*)searchBar {
    (void)searchBar;
    [self hear:@"cancel"];
}
- (void)searchBarResultsListButtonClicked:(UISearchBar*)searchBar {
    (void)searchBar;
    [self hear:@"results list"];
}
- (void)updateSearchResultsForSearchController:(UISearchController*)searchController {
    [self hear:@"update '%@'%s", searchController.searchBar.text, searchController.active ? "" : " inactive"];
}
@end
