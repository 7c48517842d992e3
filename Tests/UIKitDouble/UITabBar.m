#import "UIKitPrivate.h"

@interface UITabBarButton : UIControl
@end

@implementation UITabBarButton
- (UIControlEvents)_primaryEventOfTouch {
    return UIControlEventPrimaryActionTriggered;
}
@end

@implementation UITabBar
@synthesize items = _items, selectedItem = _selectedItem, delegate = _delegate;

- (void)dealloc {
    [_items release];
    [_selectedItem release];
    [super dealloc];
}

- (void)setItems:(NSArray*)items {
    [_items autorelease];
    _items = [items copy];
    for (UIView* view in self.subviews) [view removeFromSuperview];
    for (NSUInteger i = 0; i < [_items count]; ++i) [self _addButtonAt:i];
}

- (void)_addButtonAt:(NSUInteger)index {
    CGFloat width = _frame.size.width / (CGFloat)[_items count];
    UITabBarButton* button =
        [[UITabBarButton alloc] initWithFrame:CGRectMake(width * (CGFloat)index, 0, width, _frame.size.height)];
    UILabel* label = [[UILabel alloc] initWithFrame:button.bounds];
    label.text = [(UIBarItem*)[_items objectAtIndex:index] title];
    button.tag = (NSInteger)index;
    [button addTarget:self action:@selector(_buttonUp:) forControlEvents:UIControlEventPrimaryActionTriggered];
    [button addSubview:label];
    [self addSubview:button];
    [label release];
    [button release];
}

- (void)_buttonUp:(UITabBarButton*)button {
    UITabBarItem* item = [_items objectAtIndex:(NSUInteger)button.tag];
    self.selectedItem = item;
    if ([_delegate respondsToSelector:@selector(tabBar:didSelectItem:)]) [_delegate tabBar:self didSelectItem:item];
}
@end
