#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat actionHeight = 44;
static const CGFloat headHeight = 80;

@interface _UIAlertControllerView : UIView
@end

@implementation _UIAlertControllerView
@end

@interface _UIInterfaceActionRepresentationView : UIView
@end

@implementation _UIInterfaceActionRepresentationView
@end

@interface _UIAlertControllerInterfaceActionGroupView : UIView
@end

@implementation _UIAlertControllerInterfaceActionGroupView
@end

@interface UIActionSheetiOSDismissActionView : UIView
@end

@implementation UIActionSheetiOSDismissActionView
@end

@interface UIAlertAction (Private)
- (void)_perform;
@end

@implementation UIAlertAction
@synthesize title = _title, style = _style;

+ (instancetype)actionWithTitle:(NSString*)title
                          style:(UIAlertActionStyle)style
                        handler:(void (^)(UIAlertAction* action))handler {
    UIAlertAction* action = [[[self alloc] init] autorelease];
    action->_title = [title copy];
    action->_style = style;
    action->_handler = handler ? Block_copy(handler) : NULL;
    return action;
}

- (void)dealloc {
    [_title release];
    if (_handler) Block_release(_handler);
    [super dealloc];
}

- (void)_perform {
    if (_handler) _handler(self);
}
@end

@implementation UIAlertController
@synthesize message = _message, preferredStyle = _preferredStyle;

+ (instancetype)alertControllerWithTitle:(NSString*)title
                                 message:(NSString*)message
                          preferredStyle:(UIAlertControllerStyle)style {
    UIAlertController* alert = [[[self alloc] init] autorelease];
    alert.title = title;
    alert.message = message;
    alert->_preferredStyle = style;
    return alert;
}

- (instancetype)initWithNibName:(NSString*)name bundle:(NSBundle*)bundle {
    if ((self = [super initWithNibName:name bundle:bundle])) _actions = [[NSMutableArray alloc] init];
    return self;
}

- (void)dealloc {
    [_message release];
    [_actions release];
    [super dealloc];
}

- (NSArray*)actions {
    return [[_actions copy] autorelease];
}

- (void)addAction:(UIAlertAction*)action {
    if (action) [_actions addObject:action];
}

- (UILabel*)_labelWith:(NSString*)text at:(CGFloat)y {
    UILabel* label = [[[UILabel alloc] initWithFrame:CGRectMake(0, y, 270, actionHeight)] autorelease];
    label.text = text;
    return label;
}

- (void)loadView {
    _UIAlertControllerView* view = [[_UIAlertControllerView alloc] initWithFrame:CGRectMake(25, 150, 270, 300)];
    self.view = view;
    [view release];
    [view addSubview:[self _labelWith:self.title at:0]];
    [view addSubview:[self _labelWith:_message at:headHeight / 2]];
    NSMutableArray* grouped = [NSMutableArray array];
    NSMutableArray* apart = [NSMutableArray array]; // a sheet's cancel action stands by itself
    for (UIAlertAction* action in _actions) {
        BOOL standsApart =
            _preferredStyle == UIAlertControllerStyleActionSheet && action.style == UIAlertActionStyleCancel;
        [standsApart ? apart : grouped addObject:action];
    }
    CGFloat y = headHeight;
    y = [self _addGroup:[_UIAlertControllerInterfaceActionGroupView class] actions:grouped at:y];
    [self _addGroup:[UIActionSheetiOSDismissActionView class] actions:apart at:y];
}

- (CGFloat)_addGroup:(Class)groupClass actions:(NSArray*)actions at:(CGFloat)y {
    if (![actions count]) return y;
    CGFloat height = actionHeight * (CGFloat)[actions count];
    UIView* group = [[groupClass alloc] initWithFrame:CGRectMake(0, y, 270, height)];
    for (UIAlertAction* action in actions) [self _addRow:action to:group];
    UILongPressGestureRecognizer* press = [[UILongPressGestureRecognizer alloc] initWithTarget:self
                                                                                        action:@selector(_pressed:)];
    press.minimumPressDuration = 0;
    [group addGestureRecognizer:press];
    [self.view addSubview:group];
    [press release];
    [group release];
    return y + height;
}

- (void)_addRow:(UIAlertAction*)action to:(UIView*)group {
    CGRect frame = CGRectMake(0, actionHeight * (CGFloat)[group.subviews count], 270, actionHeight);
    UIView* row = [[_UIInterfaceActionRepresentationView alloc] initWithFrame:frame];
    row.tag = (NSInteger)[_actions indexOfObjectIdenticalTo:action];
    [row addSubview:[self _labelWith:action.title at:0]];
    [group addSubview:row];
    [row release];
}

- (void)_pressed:(UILongPressGestureRecognizer*)recognizer {
    if (recognizer.state != UIGestureRecognizerStateEnded) return;
    CGPoint point = [recognizer locationInView:recognizer.view];
    for (UIView* row in recognizer.view.subviews) {
        if (!NSPointInRect(point, row.frame)) continue;
        UIAlertAction* action = [[[_actions objectAtIndex:(NSUInteger)row.tag] retain] autorelease];
        [self dismissViewControllerAnimated:YES completion:NULL];
        [action _perform];
        return;
    }
}
@end
