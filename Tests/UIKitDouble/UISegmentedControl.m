#import "UIKitPrivate.h"

@implementation UISegmentedControl
@synthesize selectedSegmentIndex = _selectedSegmentIndex;

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super initWithFrame:frame])) {
        _titles = [[NSMutableArray alloc] init];
        _selectedSegmentIndex = UISegmentedControlNoSegment;
    }
    return self;
}

- (instancetype)initWithItems:(NSArray*)titles {
    if ((self = [self initWithFrame:CGRectMake(0, 0, 80 * (CGFloat)[titles count], 32)])) [_titles setArray:titles];
    return self;
}

- (void)dealloc {
    [_titles release];
    [super dealloc];
}

- (NSUInteger)numberOfSegments {
    return [_titles count];
}

- (NSString*)titleForSegmentAtIndex:(NSUInteger)index {
    return index < [_titles count] ? [_titles objectAtIndex:index] : nil;
}

- (void)setTitle:(NSString*)title forSegmentAtIndex:(NSUInteger)index {
    if (index < [_titles count]) [_titles replaceObjectAtIndex:index withObject:title];
}

- (void)endTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event {
    (void)event;
    CGFloat width = self.bounds.size.width / (CGFloat)MAX([_titles count], 1U);
    NSInteger touched = width > 0 ? (NSInteger)([touch locationInView:self].x / width) : 0;
    if (![self isTouchInside] || touched < 0 || touched >= (NSInteger)[_titles count]) return;
    if (touched == _selectedSegmentIndex) return;
    _selectedSegmentIndex = touched;
    [self sendActionsForControlEvents:UIControlEventValueChanged | UIControlEventPrimaryActionTriggered];
}
@end
