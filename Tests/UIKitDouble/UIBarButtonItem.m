#import "UIKitPrivate.h"

static NSString* const systemItemNames[] = {
    @"Done",   @"Cancel",   @"Edit",      @"Save",   @"Add",     @"FlexibleSpace", @"FixedSpace", @"Compose", @"Reply",
    @"Action", @"Organize", @"Bookmarks", @"Search", @"Refresh", @"Stop",          @"Camera",     @"Trash"};

// What a bar shows for an item.
@interface _UIButtonBarButton : UIControl
@end

@implementation _UIButtonBarButton
- (UIControlEvents)_primaryEventOfTouch {
    return UIControlEventPrimaryActionTriggered;
}
@end

@implementation UIBarButtonItem
@synthesize target = _target, action = _action, style = _style, customView = _customView;

- (instancetype)init {
    if ((self = [super init])) _systemItem = -1;
    return self;
}

- (instancetype)initWithTitle:(NSString*)title style:(UIBarButtonItemStyle)style target:(id)target action:(SEL)action {
    if ((self = [self init])) {
        self.title = title;
        _style = style;
        _target = target;
        _action = action;
    }
    return self;
}

- (instancetype)initWithImage:(id)image style:(UIBarButtonItemStyle)style target:(id)target action:(SEL)action {
    if ((self = [self initWithTitle:nil style:style target:target action:action])) self.image = image;
    return self;
}

- (instancetype)initWithBarButtonSystemItem:(UIBarButtonSystemItem)item target:(id)target action:(SEL)action {
    if ((self = [self initWithTitle:nil style:UIBarButtonItemStylePlain target:target action:action]))
        _systemItem = item;
    return self;
}

- (instancetype)initWithCustomView:(UIView*)view {
    if ((self = [self init])) _customView = [view retain];
    return self;
}

- (void)dealloc {
    [(UIControl*)_view removeTarget:self action:NULL forControlEvents:UIControlEventAllEvents];
    [_view release];
    [_customView release];
    [super dealloc];
}

- (NSString*)description {
    NSString* head = [NSString stringWithFormat:@"<%@: %p>", NSStringFromClass([self class]), (void*)self];
    BOOL isSystem = _systemItem >= 0 && _systemItem < (NSInteger)(sizeof systemItemNames / sizeof *systemItemNames);
    if (isSystem) return [NSString stringWithFormat:@"%@ systemItem=%@", head, systemItemNames[_systemItem]];
    if (self.title) return [NSString stringWithFormat:@"%@ title='%@'", head, self.title];
    return self.image ? [NSString stringWithFormat:@"%@ image=%@", head, self.image] : head;
}

- (UIView*)_viewForBar {
    if (_customView) return _customView;
    if (!_view) {
        _UIButtonBarButton* button = [[_UIButtonBarButton alloc] initWithFrame:CGRectMake(0, 0, 60, 44)];
        [button addTarget:self
                      action:@selector(_invoke:forEvent:)
            forControlEvents:UIControlEventPrimaryActionTriggered];
        _view = button;
    }
    return _view;
}

- (void)_invoke:(UIControl*)button forEvent:(UIEvent*)event {
    (void)button;
    if (!_action || !self.enabled) return;
    [[self retain] autorelease];
    [[UIApplication sharedApplication] sendAction:_action to:_target from:self forEvent:event];
}
@end
