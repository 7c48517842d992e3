#pragma once
#import "UIControl.h"
#import "UILabel.h"

typedef NS_OPTIONS(NSUInteger, UIControlState) {
    UIControlStateNormal = 0,
    UIControlStateHighlighted = 1 << 0,
    UIControlStateDisabled = 1 << 1,
    UIControlStateSelected = 1 << 2
};

typedef NS_ENUM(NSInteger, UIButtonType) {
    UIButtonTypeCustom = 0,
    UIButtonTypeSystem = 1,
    UIButtonTypeDetailDisclosure = 2
};

@interface UIButton : UIControl {
    NSMutableDictionary* _titles; // state -> title
    UILabel* _titleLabel;
}
@property(nonatomic, readonly) NSString* currentTitle;
@property(nonatomic, readonly) UILabel* titleLabel;
+ (instancetype)buttonWithType:(UIButtonType)type;
- (void)setTitle:(NSString*)title forState:(UIControlState)state;
- (NSString*)titleForState:(UIControlState)state;
@end
