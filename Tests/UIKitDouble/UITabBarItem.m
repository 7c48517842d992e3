#import <UIKit/UITabBarItem.h>

@implementation UITabBarItem
- (instancetype)initWithTitle:(NSString*)title image:(id)image tag:(NSInteger)tag {
    if ((self = [self init])) {
        self.title = title;
        self.image = image;
        self.tag = tag;
    }
    return self;
}
@end
