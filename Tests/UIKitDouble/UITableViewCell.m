#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat accessoryWidth = 44;

// Opens a row's swipe actions when it is moved to the left.
@interface _UISwipeActionPanGestureRecognizer : UIPanGestureRecognizer
@end

@implementation _UISwipeActionPanGestureRecognizer
- (BOOL)_shouldBegin {
    UITableViewCell* cell = (UITableViewCell*)self.view;
    CGPoint moved = [self translationInView:cell];
    return moved.x < 0 && fabs(moved.x) > fabs(moved.y) && [[cell _tableView] _swipeActionsForCell:cell] != nil;
}
@end

@implementation UITableViewCell
@synthesize reuseIdentifier = _reuseIdentifier, contentView = _contentView, accessoryView = _accessoryView;
@synthesize accessoryType = _accessoryType, selected = _selected, detailTextLabel = _detailTextLabel;

- (instancetype)initWithStyle:(UITableViewCellStyle)style reuseIdentifier:(NSString*)reuseIdentifier {
    if ((self = [self initWithFrame:CGRectMake(0, 0, 320, 44)])) {
        _reuseIdentifier = [reuseIdentifier copy];
        if (style != UITableViewCellStyleDefault) {
            _detailTextLabel = [[UILabel alloc] initWithFrame:CGRectZero];
            [_contentView addSubview:_detailTextLabel];
        }
    }
    return self;
}

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super initWithFrame:frame])) {
        _contentView = [[UIView alloc] initWithFrame:CGRectMake(0, 0, frame.size.width, frame.size.height)];
        [self addSubview:_contentView];
    }
    return self;
}

- (void)dealloc {
    [_reuseIdentifier release];
    [_contentView release];
    [_textLabel release];
    [_detailTextLabel release];
    [_accessoryView release];
    [super dealloc];
}

- (UILabel*)textLabel {
    if (!_textLabel) {
        _textLabel = [[UILabel alloc] initWithFrame:CGRectMake(16, 0, 200, 44)];
        [_contentView insertSubview:_textLabel atIndex:0];
    }
    return _textLabel;
}

- (void)setFrame:(CGRect)frame {
    [super setFrame:frame];
    _contentView.frame = CGRectMake(0, 0, frame.size.width, frame.size.height);
    [self _placeAccessory];
}

- (void)_placeAccessory {
    if (!_accessoryView) return;
    CGSize size = _accessoryView.frame.size;
    CGFloat width = MAX(size.width, accessoryWidth), height = MAX(size.height, 31);
    _accessoryView.frame = CGRectMake(_frame.size.width - width, (_frame.size.height - height) / 2, width, height);
}

- (void)setAccessoryView:(UIView*)view {
    [view retain];
    [_accessoryView removeFromSuperview];
    [_accessoryView release];
    _accessoryView = view;
    if (view) [self addSubview:view];
    [self _placeAccessory];
}

- (void)setAccessoryType:(UITableViewCellAccessoryType)type {
    if (type == _accessoryType) return;
    _accessoryType = type;
    if (type != UITableViewCellAccessoryDetailDisclosureButton) {
        self.accessoryView = nil;
        return;
    }
    UIButton* button = [UIButton buttonWithType:UIButtonTypeDetailDisclosure];
    button.frame = CGRectMake(0, 0, accessoryWidth, 31);
    [button addTarget:self action:@selector(_accessoryButtonAction:) forControlEvents:UIControlEventTouchUpInside];
    self.accessoryView = button;
}

- (void)_accessoryButtonAction:(UIButton*)button {
    (void)button;
    [[self _tableView] _accessoryTappedForCell:self];
}

- (UIView*)_accessoryButton {
    return _accessoryType == UITableViewCellAccessoryDetailDisclosureButton ? _accessoryView : nil;
}

- (UITableView*)_tableView {
    UIView* view = self.superview;
    while (view && ![view isKindOfClass:[UITableView class]]) view = view.superview;
    return (UITableView*)view;
}

- (void)_allowSwipe {
    for (UIGestureRecognizer* recognizer in self.gestureRecognizers) {
        if ([recognizer isKindOfClass:[_UISwipeActionPanGestureRecognizer class]]) return;
    }
    UIGestureRecognizer* recognizer = [[_UISwipeActionPanGestureRecognizer alloc] initWithTarget:self
                                                                                          action:@selector(_swiped:)];
    [self addGestureRecognizer:recognizer];
    [recognizer release];
}

- (void)_swiped:(UIPanGestureRecognizer*)recognizer {
    if (recognizer.state == UIGestureRecognizerStateEnded) [[self _tableView] _openSwipeActionsForCell:self];
}

- (void)prepareForReuse {
    _selected = NO;
}
@end
