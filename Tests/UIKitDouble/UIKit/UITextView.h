#pragma once
#import "UIScrollView.h"

@protocol UITextViewDelegate <UIScrollViewDelegate>
@end

@interface UITextView : UIScrollView {
    NSString* _text;
}
@property(nonatomic, copy) NSString* text;
@end
