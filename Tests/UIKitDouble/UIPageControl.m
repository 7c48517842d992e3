#import "UIKitPrivate.h"

@implementation UIPageControl
@synthesize numberOfPages = _numberOfPages, currentPage = _currentPage;

- (void)setCurrentPage:(NSInteger)page {
    _currentPage = MAX(MIN(page, _numberOfPages - 1), 0);
}

- (void)endTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event {
    (void)event;
    NSInteger former = _currentPage;
    self.currentPage = former + ([touch locationInView:self].x >= self.bounds.size.width / 2 ? 1 : -1);
    if (former == _currentPage) return;
    [self sendActionsForControlEvents:UIControlEventValueChanged | UIControlEventPrimaryActionTriggered];
}
@end
