#import "UIKitPrivate.h"
#import "UISwipeActionPullView.h"

#include <math.h>

@implementation UITableView
@dynamic delegate;
@synthesize dataSource = _dataSource, rowHeight = _rowHeight, indexPathForSelectedRow = _indexPathForSelectedRow;

- (void)_prepareTable {
    _visibleCells = [[NSMutableDictionary alloc] init];
    _reusableCells = [[NSMutableDictionary alloc] init];
    _cellClasses = [[NSMutableDictionary alloc] init];
    _rowCounts = [[NSMutableArray alloc] init];
    _rowHeight = 44;
    self.alwaysBounceVertical = YES;
}

- (instancetype)initWithFrame:(CGRect)frame {
    return [self initWithFrame:frame style:UITableViewStylePlain];
}

- (instancetype)initWithFrame:(CGRect)frame style:(UITableViewStyle)style {
    if ((self = [super initWithFrame:frame])) {
        [self _prepareTable];
        _style = style;
    }
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super initWithCoder:coder])) [self _prepareTable];
    return self;
}

- (void)dealloc {
    [_visibleCells release];
    [_reusableCells release];
    [_cellClasses release];
    [_rowCounts release];
    [_indexPathForSelectedRow release];
    [_swipedIndexPath release];
    [super dealloc];
}

- (void)setDelegate:(id<UITableViewDelegate>)delegate {
    [super setDelegate:delegate];
}

- (void)setDataSource:(id<UITableViewDataSource>)dataSource {
    _dataSource = dataSource;
    _isLoaded = NO;
}

- (void)setFrame:(CGRect)frame {
    [super setFrame:frame];
    if (_isLoaded) [self _layoutRows];
}

- (void)_load {
    if (!_isLoaded) [self reloadData];
}

- (void)reloadData {
    _isLoaded = YES;
    [self _closeSwipeActions];
    for (NSIndexPath* path in [_visibleCells allKeys]) [self _retireCellAt:path];
    [_indexPathForSelectedRow release];
    _indexPathForSelectedRow = nil;
    [self _countRows];
    [self _layoutRows];
}

- (void)_countRows {
    [_rowCounts removeAllObjects];
    NSInteger total = 0;
    BOOL tellsSections = [_dataSource respondsToSelector:@selector(numberOfSectionsInTableView:)];
    NSInteger sections = !_dataSource ? 0 : tellsSections ? [_dataSource numberOfSectionsInTableView:self] : 1;
    for (NSInteger section = 0; section < sections; ++section) {
        NSInteger rows = [_dataSource tableView:self numberOfRowsInSection:section];
        [_rowCounts addObject:[NSNumber numberWithInteger:rows]];
        total += rows;
    }
    self.contentSize = CGSizeMake(_frame.size.width, (CGFloat)total * _rowHeight);
}

- (NSInteger)numberOfSections {
    [self _load];
    return (NSInteger)[_rowCounts count];
}

- (NSInteger)numberOfRowsInSection:(NSInteger)section {
    [self _load];
    return [[_rowCounts objectAtIndex:(NSUInteger)section] integerValue];
}

- (NSIndexPath*)_pathOfOrdinal:(NSInteger)ordinal {
    for (NSUInteger section = 0; section < [_rowCounts count]; ++section) {
        NSInteger rows = [[_rowCounts objectAtIndex:section] integerValue];
        if (ordinal < rows)
            return ordinal < 0 ? nil : [NSIndexPath indexPathForRow:ordinal inSection:(NSInteger)section];
        ordinal -= rows;
    }
    return nil;
}

- (NSInteger)_ordinalOfPath:(NSIndexPath*)path {
    if ([path section] < 0 || [path section] >= (NSInteger)[_rowCounts count]) return -1;
    NSInteger before = 0;
    for (NSInteger section = 0; section < [path section]; ++section) {
        before += [[_rowCounts objectAtIndex:(NSUInteger)section] integerValue];
    }
    NSInteger rows = [[_rowCounts objectAtIndex:(NSUInteger)[path section]] integerValue];
    return [path row] >= 0 && [path row] < rows ? before + [path row] : -1;
}

- (void)_didScroll {
    if (_isLoaded) [self _layoutRows];
}

- (void)_layoutRows {
    NSInteger first = (NSInteger)floor(self.contentOffset.y / _rowHeight);
    NSInteger last = (NSInteger)ceil((self.contentOffset.y + _frame.size.height) / _rowHeight) - 1;
    NSMutableSet* visible = [NSMutableSet set];
    for (NSInteger ordinal = MAX(first, 0); ordinal <= last; ++ordinal) {
        NSIndexPath* path = [self _pathOfOrdinal:ordinal];
        if (!path) break;
        [visible addObject:path];
    }
    for (NSIndexPath* path in [_visibleCells allKeys]) {
        if (![visible containsObject:path]) [self _retireCellAt:path];
    }
    for (NSIndexPath* path in visible) {
        if (![_visibleCells objectForKey:path]) [self _showCellAt:path];
    }
}

- (void)_showCellAt:(NSIndexPath*)path {
    UITableViewCell* cell = [_dataSource tableView:self cellForRowAtIndexPath:path];
    if (!cell) return;
    [_visibleCells setObject:cell forKey:path];
    cell.frame = [self rectForRowAtIndexPath:path];
    [self addSubview:cell];
    SEL swipe = @selector(tableView:trailingSwipeActionsConfigurationForRowAtIndexPath:);
    if ([_delegate respondsToSelector:swipe]) [cell _allowSwipe];
}

- (void)_retireCellAt:(NSIndexPath*)path {
    UITableViewCell* cell = [[[_visibleCells objectForKey:path] retain] autorelease];
    [_visibleCells removeObjectForKey:path];
    [cell removeFromSuperview];
    if (![cell reuseIdentifier]) return;
    NSMutableArray* queue = [_reusableCells objectForKey:[cell reuseIdentifier]];
    if (!queue) {
        queue = [NSMutableArray array];
        [_reusableCells setObject:queue forKey:[cell reuseIdentifier]];
    }
    [queue addObject:cell];
}

- (void)registerClass:(Class)cellClass forCellReuseIdentifier:(NSString*)identifier {
    [_cellClasses setObject:cellClass forKey:identifier];
}

- (id)dequeueReusableCellWithIdentifier:(NSString*)identifier {
    NSMutableArray* queue = [_reusableCells objectForKey:identifier];
    if ([queue count]) {
        UITableViewCell* cell = [[[queue lastObject] retain] autorelease];
        [queue removeLastObject];
        [cell prepareForReuse];
        return cell;
    }
    Class cellClass = [_cellClasses objectForKey:identifier];
    return [[[cellClass alloc] initWithStyle:UITableViewCellStyleDefault reuseIdentifier:identifier] autorelease];
}

- (id)dequeueReusableCellWithIdentifier:(NSString*)identifier forIndexPath:(NSIndexPath*)indexPath {
    (void)indexPath;
    return [self dequeueReusableCellWithIdentifier:identifier];
}

- (UITableViewCell*)cellForRowAtIndexPath:(NSIndexPath*)indexPath {
    [self _load];
    return indexPath ? [_visibleCells objectForKey:indexPath] : nil;
}

- (NSIndexPath*)indexPathForCell:(UITableViewCell*)cell {
    return [[_visibleCells allKeysForObject:cell] lastObject];
}

- (NSIndexPath*)indexPathForRowAtPoint:(CGPoint)point {
    [self _load];
    if (point.x < 0 || point.x >= _frame.size.width || point.y < 0) return nil;
    return [self _pathOfOrdinal:(NSInteger)floor(point.y / _rowHeight)];
}

- (CGRect)rectForRowAtIndexPath:(NSIndexPath*)indexPath {
    [self _load];
    NSInteger ordinal = [self _ordinalOfPath:indexPath];
    return ordinal < 0 ? CGRectZero : CGRectMake(0, (CGFloat)ordinal * _rowHeight, _frame.size.width, _rowHeight);
}

- (NSArray*)indexPathsForVisibleRows {
    [self _load];
    return [[_visibleCells allKeys] sortedArrayUsingSelector:@selector(compare:)];
}

- (NSArray*)visibleCells {
    return [_visibleCells objectsForKeys:[self indexPathsForVisibleRows] notFoundMarker:[NSNull null]];
}

- (void)selectRowAtIndexPath:(NSIndexPath*)indexPath animated:(BOOL)animated scrollPosition:(NSInteger)position {
    (void)animated;
    (void)position;
    [[self cellForRowAtIndexPath:_indexPathForSelectedRow] setSelected:NO];
    [_indexPathForSelectedRow autorelease];
    _indexPathForSelectedRow = [indexPath retain];
    [[self cellForRowAtIndexPath:indexPath] setSelected:YES];
}

- (void)deselectRowAtIndexPath:(NSIndexPath*)indexPath animated:(BOOL)animated {
    (void)animated;
    if (![indexPath isEqual:_indexPathForSelectedRow]) return;
    [[self cellForRowAtIndexPath:indexPath] setSelected:NO];
    [_indexPathForSelectedRow autorelease];
    _indexPathForSelectedRow = nil;
}

- (void)deleteRowsAtIndexPaths:(NSArray*)indexPaths withRowAnimation:(NSInteger)animation {
    (void)indexPaths;
    (void)animation;
    [self reloadData];
}

- (UIView*)hitTest:(CGPoint)point withEvent:(UIEvent*)event {
    [self _load];
    return [super hitTest:point withEvent:event];
}

- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)event;
    if (_swipedIndexPath) {
        [self _closeSwipeActions];
        return;
    }
    UITouch* touch = [touches anyObject];
    NSIndexPath* path = [self indexPathForRowAtPoint:[touch locationInView:self]];
    if (path && ![touch _hasMoved]) [self _userSelects:path];
}

- (void)_userSelects:(NSIndexPath*)path {
    [[self retain] autorelease];
    if ([_delegate respondsToSelector:@selector(tableView:willSelectRowAtIndexPath:)]) {
        path = [_delegate tableView:self willSelectRowAtIndexPath:path];
        if (!path) return;
    }
    [self selectRowAtIndexPath:path animated:NO scrollPosition:0];
    if ([_delegate respondsToSelector:@selector(tableView:didSelectRowAtIndexPath:)]) {
        [_delegate tableView:self didSelectRowAtIndexPath:path];
    }
}

- (void)_accessoryTappedForCell:(UITableViewCell*)cell {
    NSIndexPath* path = [self indexPathForCell:cell];
    SEL callback = @selector(tableView:accessoryButtonTappedForRowWithIndexPath:);
    if (path && [_delegate respondsToSelector:callback]) {
        [_delegate tableView:self accessoryButtonTappedForRowWithIndexPath:path];
    }
}

- (UISwipeActionsConfiguration*)_swipeActionsForCell:(UITableViewCell*)cell {
    NSIndexPath* path = [self indexPathForCell:cell];
    SEL callback = @selector(tableView:trailingSwipeActionsConfigurationForRowAtIndexPath:);
    if (!path || ![_delegate respondsToSelector:callback]) return nil;
    return [_delegate tableView:self trailingSwipeActionsConfigurationForRowAtIndexPath:path];
}

- (void)_openSwipeActionsForCell:(UITableViewCell*)cell {
    [self _closeSwipeActions];
    NSArray* actions = [[self _swipeActionsForCell:cell] actions];
    if (![actions count]) return;
    _swipedIndexPath = [[self indexPathForCell:cell] retain];
    UISwipeActionPullView* pull = [[UISwipeActionPullView alloc] initWithActions:actions tableView:self];
    CGFloat width = pull.frame.size.width;
    pull.frame = CGRectMake(_frame.size.width - width, cell.frame.origin.y, width, _rowHeight);
    [self addSubview:pull];
    [pull release];
}

- (void)_closeSwipeActions {
    [_swipedIndexPath release];
    _swipedIndexPath = nil;
    for (UIView* view in self.subviews) {
        if ([view isKindOfClass:[UISwipeActionPullView class]]) [view removeFromSuperview];
    }
}
@end
