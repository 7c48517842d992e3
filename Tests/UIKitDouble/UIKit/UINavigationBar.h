#pragma once
#import "UINavigationItem.h"

// Shows the top item's bar buttons, and a back button where there is somewhere to go back to.
@interface UINavigationBar : UIView {
    UINavigationItem* _topItem;
}
@property(nonatomic, readonly) UINavigationItem* topItem;
@end
