#import "UIKitPrivate.h"

@interface UITextTapRecognizer : UITapGestureRecognizer
@end

@implementation UITextTapRecognizer
@end

@implementation UITextField
@synthesize text = _text, placeholder = _placeholder, delegate = _delegate;

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super initWithFrame:frame])) {
        UITextTapRecognizer* tap = [[UITextTapRecognizer alloc] initWithTarget:self action:@selector(_tapped:)];
        [self addGestureRecognizer:tap];
        [tap release];
        _text = @"";
    }
    return self;
}

- (void)dealloc {
    [_text release];
    [_placeholder release];
    [super dealloc];
}

- (void)setText:(NSString*)text {
    [_text autorelease];
    _text = text ? [text copy] : @"";
}

- (void)_tapped:(UITapGestureRecognizer*)recognizer {
    (void)recognizer;
    [self becomeFirstResponder];
}

- (BOOL)canBecomeFirstResponder {
    return self.enabled;
}

- (BOOL)becomeFirstResponder {
    BOOL wasEditing = [self isFirstResponder];
    if (![super becomeFirstResponder]) return NO;
    if (wasEditing) return YES;
    if ([_delegate respondsToSelector:@selector(textFieldDidBeginEditing:)]) [_delegate textFieldDidBeginEditing:self];
    [self sendActionsForControlEvents:UIControlEventEditingDidBegin];
    return YES;
}

- (BOOL)resignFirstResponder {
    BOOL wasEditing = [self isFirstResponder];
    [super resignFirstResponder];
    if (!wasEditing) return YES;
    if ([_delegate respondsToSelector:@selector(textFieldDidEndEditing:)]) [_delegate textFieldDidEndEditing:self];
    [self sendActionsForControlEvents:UIControlEventEditingDidEnd];
    return YES;
}

- (void)insertText:(NSString*)text {
    if ([text isEqualToString:@"\n"]) {
        BOOL returns =
            ![_delegate respondsToSelector:@selector(textFieldShouldReturn:)] || [_delegate textFieldShouldReturn:self];
        if (returns) [self sendActionsForControlEvents:UIControlEventEditingDidEndOnExit];
        return;
    }
    self.text = [_text stringByAppendingString:text];
    [self sendActionsForControlEvents:UIControlEventEditingChanged];
}

- (void)deleteBackward {
    if ([_text length] == 0) return;
    NSRange last = [_text rangeOfComposedCharacterSequenceAtIndex:[_text length] - 1];
    self.text = [_text substringToIndex:last.location];
    [self sendActionsForControlEvents:UIControlEventEditingChanged];
}
@end
