#import "UIKitPrivate.h"

@interface UISwitchModernVisualElement : UIView
@end

@implementation UISwitchModernVisualElement
@end

@implementation UISwitch
@synthesize on = _on;

- (void)_addElement {
    UISwitchModernVisualElement* element = [[UISwitchModernVisualElement alloc] initWithFrame:self.bounds];
    UITapGestureRecognizer* tap = [[UITapGestureRecognizer alloc] initWithTarget:self action:@selector(_tapped:)];
    UIPanGestureRecognizer* pan = [[UIPanGestureRecognizer alloc] initWithTarget:self action:@selector(_panned:)];
    [element addGestureRecognizer:tap];
    [element addGestureRecognizer:pan];
    [self addSubview:element];
    [tap release];
    [pan release];
    [element release];
}

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super initWithFrame:CGRectMake(frame.origin.x, frame.origin.y, 51, 31)])) [self _addElement];
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super initWithCoder:coder])) [self _addElement];
    return self;
}

- (void)setOn:(BOOL)on animated:(BOOL)animated {
    (void)animated;
    self.on = on;
}

- (void)_userSets:(BOOL)on {
    if (!self.enabled || on == _on) return;
    _on = on;
    [self sendActionsForControlEvents:UIControlEventValueChanged | UIControlEventPrimaryActionTriggered];
}

- (void)_tapped:(UITapGestureRecognizer*)recognizer {
    (void)recognizer;
    [self _userSets:!_on];
}

- (void)_panned:(UIPanGestureRecognizer*)recognizer {
    if (recognizer.state == UIGestureRecognizerStateEnded) [self _userSets:[recognizer translationInView:self].x > 0];
}
@end
