#import "UIKitPrivate.h"

@implementation UICollectionViewFlowLayout
@synthesize itemSize = _itemSize;

- (instancetype)init {
    if ((self = [super init])) _itemSize = CGSizeMake(50, 50);
    return self;
}
@end

@implementation UICollectionView
@dynamic delegate;
@synthesize dataSource = _dataSource, collectionViewLayout = _collectionViewLayout;

- (instancetype)initWithFrame:(CGRect)frame {
    return [self initWithFrame:frame collectionViewLayout:[[[UICollectionViewFlowLayout alloc] init] autorelease]];
}

- (instancetype)initWithFrame:(CGRect)frame collectionViewLayout:(UICollectionViewFlowLayout*)layout {
    if ((self = [super initWithFrame:frame])) {
        _collectionViewLayout = [layout retain];
        _cellClasses = [[NSMutableDictionary alloc] init];
        _reusableCells = [[NSMutableDictionary alloc] init];
        _cells = [[NSMutableArray alloc] init];
        _identifiers = [[NSMutableArray alloc] init];
    }
    return self;
}

- (void)dealloc {
    [_collectionViewLayout release];
    [_cellClasses release];
    [_reusableCells release];
    [_cells release];
    [_identifiers release];
    [super dealloc];
}

- (void)setDelegate:(id<UICollectionViewDelegate>)delegate {
    [super setDelegate:delegate];
}

- (void)setDataSource:(id<UICollectionViewDataSource>)dataSource {
    _dataSource = dataSource;
    _isLoaded = NO;
}

- (void)reloadData {
    _isLoaded = YES;
    for (UIView* cell in _cells) [cell removeFromSuperview];
    for (NSUInteger i = 0; i < [_cells count]; ++i)
        [self _retire:[_cells objectAtIndex:i] identifier:[_identifiers objectAtIndex:i]];
    [_cells removeAllObjects];
    [_identifiers removeAllObjects];
    NSInteger items = [_dataSource collectionView:self numberOfItemsInSection:0];
    for (NSInteger item = 0; item < items; ++item) [self _addCellAt:item];
    CGRect last = items ? [self _frameOfItem:items - 1] : CGRectZero;
    self.contentSize = CGSizeMake(_frame.size.width, NSMaxY(last));
}

- (void)_retire:(UICollectionViewCell*)cell identifier:(NSString*)identifier {
    NSMutableArray* queue = [_reusableCells objectForKey:identifier];
    if (!queue) {
        queue = [NSMutableArray array];
        [_reusableCells setObject:queue forKey:identifier];
    }
    [queue addObject:cell];
}

- (void)_addCellAt:(NSInteger)item {
    NSUInteger before = [_identifiers count];
    UICollectionViewCell* cell = [_dataSource collectionView:self
                                      cellForItemAtIndexPath:[NSIndexPath indexPathForItem:item inSection:0]];
    if ([_identifiers count] == before) [_identifiers addObject:@""]; // made by hand
    cell.frame = [self _frameOfItem:item];
    [_cells addObject:cell];
    [self addSubview:cell];
}

- (CGRect)_frameOfItem:(NSInteger)item {
    CGSize size = _collectionViewLayout.itemSize;
    NSInteger perLine = MAX((NSInteger)(_frame.size.width / size.width), 1);
    return CGRectMake((CGFloat)(item % perLine) * size.width, (CGFloat)(item / perLine) * size.height, size.width,
                      size.height);
}

- (void)_load {
    if (!_isLoaded && _dataSource) [self reloadData];
}

- (NSInteger)numberOfItemsInSection:(NSInteger)section {
    (void)section;
    [self _load];
    return (NSInteger)[_cells count];
}

- (void)registerClass:(Class)cellClass forCellWithReuseIdentifier:(NSString*)identifier {
    [_cellClasses setObject:cellClass forKey:identifier];
}

- (id)dequeueReusableCellWithReuseIdentifier:(NSString*)identifier forIndexPath:(NSIndexPath*)indexPath {
    (void)indexPath;
    [_identifiers addObject:identifier];
    NSMutableArray* queue = [_reusableCells objectForKey:identifier];
    if ([queue count]) {
        UICollectionViewCell* cell = [[[queue lastObject] retain] autorelease];
        [queue removeLastObject];
        [cell prepareForReuse];
        return cell;
    }
    Class cellClass = [_cellClasses objectForKey:identifier];
    return [[[cellClass alloc] initWithFrame:CGRectZero] autorelease];
}

- (UICollectionViewCell*)cellForItemAtIndexPath:(NSIndexPath*)indexPath {
    [self _load];
    NSInteger item = indexPath ? [indexPath item] : -1;
    return item >= 0 && item < (NSInteger)[_cells count] ? [_cells objectAtIndex:(NSUInteger)item] : nil;
}

- (NSIndexPath*)indexPathForItemAtPoint:(CGPoint)point {
    [self _load];
    for (NSUInteger item = 0; item < [_cells count]; ++item) {
        if (NSPointInRect(point, [(UIView*)[_cells objectAtIndex:item] frame])) {
            return [NSIndexPath indexPathForItem:(NSInteger)item inSection:0];
        }
    }
    return nil;
}

- (UIView*)hitTest:(CGPoint)point withEvent:(UIEvent*)event {
    [self _load];
    return [super hitTest:point withEvent:event];
}

- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)event;
    UITouch* touch = [touches anyObject];
    NSIndexPath* path = [self indexPathForItemAtPoint:[touch locationInView:self]];
    if (!path || [touch _hasMoved]) return;
    for (UICollectionViewCell* cell in _cells) cell.selected = NO;
    [[self cellForItemAtIndexPath:path] setSelected:YES];
    if ([_delegate respondsToSelector:@selector(collectionView:didSelectItemAtIndexPath:)]) {
        [_delegate collectionView:self didSelectItemAtIndexPath:path];
    }
}
@end
