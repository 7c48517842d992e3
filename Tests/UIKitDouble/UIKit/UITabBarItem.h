#pragma once
#import "UIBarItem.h"

@interface UITabBarItem : UIBarItem
- (instancetype)initWithTitle:(NSString*)title image:(id)image tag:(NSInteger)tag;
@end
