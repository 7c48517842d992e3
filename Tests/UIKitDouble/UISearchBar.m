#import "UIKitPrivate.h"

@interface UISearchBarTextField : UITextField
@end

@implementation UISearchBarTextField
@end

@interface UINavigationButton : UIButton
@end

@implementation UINavigationButton
@end

@interface UISearchBarBookmarkView : UIControl
@end

@implementation UISearchBarBookmarkView
@end

@implementation UISearchBar
@synthesize delegate = _delegate, searchTextField = _searchTextField;

- (void)_addParts {
    CGFloat width = MAX(_frame.size.width, 320);
    _searchTextField = [[UISearchBarTextField alloc] initWithFrame:CGRectMake(8, 4, width - 200, 36)];
    _searchTextField.delegate = self;
    [_searchTextField addTarget:self
                         action:@selector(_searchFieldEditingChanged)
               forControlEvents:UIControlEventEditingChanged];
    [self addSubview:_searchTextField];
    _clearButton = [self _addButton:[UIButton class] at:width - 190 action:@selector(_clearButtonClicked:)];
    _bookmarkButton = [self _addButton:[UISearchBarBookmarkView class]
                                    at:width - 140
                                action:@selector(_bookmarkButtonPressed)];
    _resultsListButton = [self _addButton:[UIButton class] at:width - 90 action:@selector(_resultsListButtonPressed)];
    _cancelButton = [self _addButton:[UINavigationButton class] at:width - 45 action:@selector(_cancelButtonPressed)];
    _bookmarkButton.hidden = _resultsListButton.hidden = _cancelButton.hidden = YES;
    [(UIButton*)_cancelButton setTitle:@"Cancel" forState:UIControlStateNormal];
    [self _textChanged];
}

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super
             initWithFrame:frame.size.height > 0 ? frame : CGRectMake(frame.origin.x, frame.origin.y, 320, 44)])) {
        [self _addParts];
    }
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super initWithCoder:coder])) [self _addParts];
    return self;
}

- (void)dealloc {
    _searchTextField.delegate = nil;
    [_searchTextField release];
    [super dealloc];
}

- (UIControl*)_addButton:(Class)buttonClass at:(CGFloat)x action:(SEL)action {
    UIControl* button = [[buttonClass alloc] initWithFrame:CGRectMake(x, 4, 40, 36)];
    [button addTarget:self action:action forControlEvents:UIControlEventTouchUpInside];
    [self addSubview:button];
    [button release];
    return button;
}

- (NSString*)text {
    return _searchTextField.text;
}

- (void)setText:(NSString*)text {
    _searchTextField.text = text;
    _clearButton.hidden = [_searchTextField.text length] == 0;
}

- (NSString*)placeholder {
    return _searchTextField.placeholder;
}

- (void)setPlaceholder:(NSString*)placeholder {
    _searchTextField.placeholder = placeholder;
}

- (BOOL)showsCancelButton {
    return !_cancelButton.hidden;
}

- (void)setShowsCancelButton:(BOOL)shows {
    _cancelButton.hidden = !shows;
}

- (BOOL)showsBookmarkButton {
    return !_bookmarkButton.hidden;
}

- (void)setShowsBookmarkButton:(BOOL)shows {
    _bookmarkButton.hidden = !shows;
}

- (BOOL)showsSearchResultsButton {
    return !_resultsListButton.hidden;
}

- (void)setShowsSearchResultsButton:(BOOL)shows {
    _resultsListButton.hidden = !shows;
}

- (BOOL)becomeFirstResponder {
    return [_searchTextField becomeFirstResponder];
}

- (BOOL)resignFirstResponder {
    return [_searchTextField resignFirstResponder];
}

- (void)_setController:(UISearchController*)controller {
    _controller = controller;
}

- (void)_textChanged {
    _clearButton.hidden = [_searchTextField.text length] == 0;
    if ([_delegate respondsToSelector:@selector(searchBar:textDidChange:)]) {
        [_delegate searchBar:self textDidChange:self.text];
    }
    [_controller _update];
}

- (void)_searchFieldEditingChanged {
    [self _textChanged];
}

- (void)textFieldDidBeginEditing:(UITextField*)field {
    (void)field;
    if ([_delegate respondsToSelector:@selector(searchBarTextDidBeginEditing:)]) {
        [_delegate searchBarTextDidBeginEditing:self];
    }
    _controller.active = YES;
}

- (void)textFieldDidEndEditing:(UITextField*)field {
    (void)field;
    if ([_delegate respondsToSelector:@selector(searchBarTextDidEndEditing:)]) {
        [_delegate searchBarTextDidEndEditing:self];
    }
}

- (BOOL)textFieldShouldReturn:(UITextField*)field {
    (void)field;
    if ([_delegate respondsToSelector:@selector(searchBarSearchButtonClicked:)]) {
        [_delegate searchBarSearchButtonClicked:self];
    }
    return NO;
}

- (void)_clearButtonClicked:(UIButton*)button {
    (void)button;
    self.text = @"";
    [self _textChanged];
}

- (void)_bookmarkButtonPressed {
    if ([_delegate respondsToSelector:@selector(searchBarBookmarkButtonClicked:)]) {
        [_delegate searchBarBookmarkButtonClicked:self];
    }
}

- (void)_resultsListButtonPressed {
    if ([_delegate respondsToSelector:@selector(searchBarResultsListButtonClicked:)]) {
        [_delegate searchBarResultsListButtonClicked:self];
    }
}

- (void)_cancelButtonPressed {
    if ([_delegate respondsToSelector:@selector(searchBarCancelButtonClicked:)]) {
        [_delegate searchBarCancelButtonClicked:self];
    }
    _controller.active = NO;
}
@end
