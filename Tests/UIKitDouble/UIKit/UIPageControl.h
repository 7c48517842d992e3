#pragma once
#import "UIControl.h"

// A touch on its right half turns to the next page, one on its left half to the one before.
@interface UIPageControl : UIControl {
    NSInteger _numberOfPages, _currentPage;
}
@property(nonatomic) NSInteger numberOfPages;
@property(nonatomic) NSInteger currentPage;
@end
