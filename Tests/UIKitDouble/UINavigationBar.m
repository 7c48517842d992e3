#import "UIKitPrivate.h"
#import "UINavigationBarPrivate.h"

@implementation _UINavigationBarBackButton
- (UIControlEvents)_primaryEventOfTouch {
    return UIControlEventPrimaryActionTriggered;
}
@end

@implementation UINavigationBar
@synthesize topItem = _topItem;

- (void)dealloc {
    [_topItem release];
    [super dealloc];
}

- (void)_setTopItem:(UINavigationItem*)item backTarget:(id)target action:(SEL)action {
    [item retain];
    [_topItem release];
    _topItem = item;
    for (UIView* view in self.subviews) [view removeFromSuperview];
    if (target && !item.leftBarButtonItem) {
        _UINavigationBarBackButton* back = [[_UINavigationBarBackButton alloc] initWithFrame:CGRectMake(0, 0, 60, 44)];
        [back addTarget:target action:action forControlEvents:UIControlEventPrimaryActionTriggered];
        [self addSubview:back];
        [back release];
    }
    [self _show:item.leftBarButtonItem at:0];
    [self _show:item.rightBarButtonItem at:_frame.size.width - 60];
}

- (void)_show:(UIBarButtonItem*)item at:(CGFloat)x {
    UIView* view = [item _viewForBar];
    if (!view) return;
    view.frame = CGRectMake(x, 0, MAX(view.frame.size.width, 60), 44);
    [self addSubview:view];
}
@end
