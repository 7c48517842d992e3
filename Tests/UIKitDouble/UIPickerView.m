#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat wheelRowHeight = 32;

@interface UIPickerTableView : UITableView
@end

@implementation UIPickerTableView
@end

@interface UIPickerTableViewWrapperCell : UITableViewCell
@end

@implementation UIPickerTableViewWrapperCell
@end

@interface UIPickerView (Tables) <UITableViewDataSource, UITableViewDelegate>
@end

@implementation UIPickerView
@synthesize delegate = _delegate, dataSource = _dataSource;

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super
             initWithFrame:frame.size.height > 0 ? frame : CGRectMake(frame.origin.x, frame.origin.y, 320, 160)])) {
        _tables = [[NSMutableArray alloc] init];
        _selectedRows = [[NSMutableArray alloc] init];
    }
    return self;
}

- (void)dealloc {
    for (UITableView* table in _tables) {
        table.delegate = nil;
        table.dataSource = nil;
    }
    [_tables release];
    [_selectedRows release];
    [super dealloc];
}

- (void)setDelegate:(id<UIPickerViewDelegate>)delegate {
    _delegate = delegate;
    if (delegate && _dataSource) [self reloadAllComponents];
}

- (void)setDataSource:(id<UIPickerViewDataSource>)dataSource {
    _dataSource = dataSource;
    if (_delegate && dataSource) [self reloadAllComponents];
}

- (void)reloadAllComponents {
    for (UIView* table in _tables) [table removeFromSuperview];
    [_tables removeAllObjects];
    [_selectedRows removeAllObjects];
    NSInteger components = [_dataSource numberOfComponentsInPickerView:self];
    for (NSInteger component = 0; component < components; ++component) [self _addTableOf:components];
}

- (void)_addTableOf:(NSInteger)components {
    CGFloat width = _frame.size.width / (CGFloat)components;
    CGRect frame = CGRectMake(width * (CGFloat)[_tables count], 0, width, _frame.size.height);
    UIPickerTableView* table = [[UIPickerTableView alloc] initWithFrame:frame];
    table.rowHeight = wheelRowHeight;
    [_tables addObject:table];
    [_selectedRows addObject:[NSNumber numberWithInteger:0]];
    table.dataSource = self;
    table.delegate = self;
    [self addSubview:table];
    [table release];
}

- (NSInteger)numberOfComponents {
    return (NSInteger)[_tables count];
}

- (NSInteger)selectedRowInComponent:(NSInteger)component {
    BOOL exists = component >= 0 && component < (NSInteger)[_selectedRows count];
    return exists ? [[_selectedRows objectAtIndex:(NSUInteger)component] integerValue] : -1;
}

- (void)selectRow:(NSInteger)row inComponent:(NSInteger)component animated:(BOOL)animated {
    (void)animated;
    [_selectedRows replaceObjectAtIndex:(NSUInteger)component withObject:[NSNumber numberWithInteger:row]];
}

- (void)_userPicks:(NSInteger)row in:(UITableView*)table {
    NSInteger component = (NSInteger)[_tables indexOfObjectIdenticalTo:table];
    row = MIN(MAX(row, 0), [table numberOfRowsInSection:0] - 1);
    if (row < 0 || row == [self selectedRowInComponent:component]) return;
    [self selectRow:row inComponent:component animated:YES];
    if ([_delegate respondsToSelector:@selector(pickerView:didSelectRow:inComponent:)]) {
        [_delegate pickerView:self didSelectRow:row inComponent:component];
    }
}

- (void)_rowTapped:(UITapGestureRecognizer*)recognizer {
    UITableView* table = (UITableView*)recognizer.view.superview;
    [self _userPicks:[[table indexPathForCell:(UITableViewCell*)recognizer.view] row] in:table];
}

- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section {
    (void)section;
    NSInteger component = (NSInteger)[_tables indexOfObjectIdenticalTo:tableView];
    return [_dataSource pickerView:self numberOfRowsInComponent:component];
}

- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath {
    UITableViewCell* cell = [tableView dequeueReusableCellWithIdentifier:@"Row"];
    if (!cell) {
        cell = [[[UIPickerTableViewWrapperCell alloc] initWithStyle:UITableViewCellStyleDefault
                                                    reuseIdentifier:@"Row"] autorelease];
        UITapGestureRecognizer* tap = [[UITapGestureRecognizer alloc] initWithTarget:self
                                                                              action:@selector(_rowTapped:)];
        [cell addGestureRecognizer:tap];
        [tap release];
    }
    NSInteger component = (NSInteger)[_tables indexOfObjectIdenticalTo:tableView];
    BOOL hasTitles = [_delegate respondsToSelector:@selector(pickerView:titleForRow:forComponent:)];
    cell.textLabel.text =
        hasTitles ? [_delegate pickerView:self titleForRow:[indexPath row] forComponent:component] : nil;
    return cell;
}

- (void)scrollViewDidEndDecelerating:(UIScrollView*)scrollView {
    UITableView* table = (UITableView*)scrollView;
    [self _userPicks:(NSInteger)lround(table.contentOffset.y / wheelRowHeight) in:table];
}
@end
