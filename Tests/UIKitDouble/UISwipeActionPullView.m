#import "UISwipeActionPullView.h"

#import "UIKitPrivate.h"

static const CGFloat buttonWidth = 74;

@implementation UISwipeActionStandardButton
@end

@implementation UISwipeActionPullView
- (instancetype)initWithActions:(NSArray*)actions tableView:(UITableView*)tableView {
    if ((self = [super initWithFrame:CGRectMake(0, 0, buttonWidth * (CGFloat)[actions count], 44)])) {
        _actions = [actions copy];
        _tableView = tableView;
        for (NSUInteger i = 0; i < [actions count]; ++i) [self _addButtonAt:i];
    }
    return self;
}

- (void)dealloc {
    [_actions release];
    [super dealloc];
}

- (void)_addButtonAt:(NSUInteger)index {
    UIButton* button = [UISwipeActionStandardButton buttonWithType:UIButtonTypeCustom];
    button.frame = CGRectMake(buttonWidth * (CGFloat)index, 0, buttonWidth, 44);
    button.tag = (NSInteger)index;
    [button setTitle:[[_actions objectAtIndex:index] title] forState:UIControlStateNormal];
    [button addTarget:self action:@selector(_tappedButton:) forControlEvents:UIControlEventTouchUpInside];
    [self addSubview:button];
}

- (void)_tappedButton:(UIButton*)button {
    [[self retain] autorelease];
    UITableView* tableView = _tableView;
    UIContextualAction* action = [[[_actions objectAtIndex:(NSUInteger)button.tag] retain] autorelease];
    if (action.handler)
        action.handler(action, self, ^(BOOL isPerformed) {
          (void)isPerformed;
        });
    [tableView _closeSwipeActions];
}
@end
