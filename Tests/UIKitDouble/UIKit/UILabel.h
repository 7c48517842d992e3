#pragma once
#import "UIView.h"

@interface UILabel : UIView {
    NSString* _text;
}
@property(nonatomic, copy) NSString* text;
@end
