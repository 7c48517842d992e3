#pragma once
#import "UIControl.h"

@class UITextField;

@protocol UITextFieldDelegate <NSObject>
@optional
- (void)textFieldDidBeginEditing:(UITextField*)field;
- (void)textFieldDidEndEditing:(UITextField*)field;
- (BOOL)textFieldShouldReturn:(UITextField*)field;
@end

// A touch begins editing; -insertText: and -deleteBackward are the keyboard's.
@interface UITextField : UIControl {
    NSString* _text;
    NSString* _placeholder;
    id<UITextFieldDelegate> _delegate;
}
@property(nonatomic, copy) NSString* text;
@property(nonatomic, copy) NSString* placeholder;
@property(nonatomic, assign) id<UITextFieldDelegate> delegate;
- (void)insertText:(NSString*)text; // a line feed is the return key
- (void)deleteBackward;
@end
