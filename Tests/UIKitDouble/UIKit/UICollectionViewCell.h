#pragma once
#import "UIView.h"

@interface UICollectionViewCell : UIView {
    UIView* _contentView;
    BOOL _selected;
}
@property(nonatomic, readonly) UIView* contentView;
@property(nonatomic, getter=isSelected) BOOL selected;
- (void)prepareForReuse;
@end
