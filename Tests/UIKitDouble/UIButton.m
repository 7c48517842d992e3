#import "UIKitPrivate.h"

@implementation UIButton
@synthesize titleLabel = _titleLabel;

+ (instancetype)buttonWithType:(UIButtonType)type {
    (void)type;
    return [[[self alloc] initWithFrame:CGRectMake(0, 0, 100, 44)] autorelease];
}

- (void)_prepareButton {
    _titles = [[NSMutableDictionary alloc] init];
    _titleLabel = [[UILabel alloc] initWithFrame:CGRectZero];
    [self addSubview:_titleLabel];
}

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super initWithFrame:frame])) [self _prepareButton];
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super initWithCoder:coder])) [self _prepareButton];
    return self;
}

- (void)dealloc {
    [_titles release];
    [_titleLabel release];
    [super dealloc];
}

- (void)setTitle:(NSString*)title forState:(UIControlState)state {
    NSNumber* key = [NSNumber numberWithUnsignedInteger:state];
    if (title) {
        NSString* copy = [title copy];
        [_titles setObject:copy forKey:key];
        [copy release];
    } else {
        [_titles removeObjectForKey:key];
    }
    _titleLabel.text = [self currentTitle];
}

- (NSString*)titleForState:(UIControlState)state {
    return [_titles objectForKey:[NSNumber numberWithUnsignedInteger:state]];
}

- (NSString*)currentTitle {
    UIControlState state = (self.enabled ? 0 : UIControlStateDisabled) | (self.selected ? UIControlStateSelected : 0);
    NSString* title = [self titleForState:state];
    return title ? title : [self titleForState:UIControlStateNormal];
}

- (UIControlEvents)_primaryEventOfTouch {
    return UIControlEventPrimaryActionTriggered;
}
@end
