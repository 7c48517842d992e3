#import "UIKitPrivate.h"

@implementation UIContextualAction
@synthesize style = _style, title = _title, handler = _handler;

+ (instancetype)contextualActionWithStyle:(UIContextualActionStyle)style
                                    title:(NSString*)title
                                  handler:(UIContextualActionHandler)handler {
    UIContextualAction* action = [[[self alloc] init] autorelease];
    action->_style = style;
    action->_title = [title copy];
    action->_handler = handler ? Block_copy(handler) : NULL;
    return action;
}

- (void)dealloc {
    [_title release];
    if (_handler) Block_release(_handler);
    [super dealloc];
}
@end

@implementation UISwipeActionsConfiguration
@synthesize actions = _actions;

+ (instancetype)configurationWithActions:(NSArray*)actions {
    UISwipeActionsConfiguration* configuration = [[[self alloc] init] autorelease];
    configuration->_actions = [actions copy];
    return configuration;
}

- (void)dealloc {
    [_actions release];
    [super dealloc];
}
@end
