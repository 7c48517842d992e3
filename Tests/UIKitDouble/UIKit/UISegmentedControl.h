#pragma once
#import "UIControl.h"

enum { UISegmentedControlNoSegment = -1 };

// A touch selects the segment under it. The segments share its width evenly.
@interface UISegmentedControl : UIControl {
    NSMutableArray* _titles;
    NSInteger _selectedSegmentIndex;
}
@property(nonatomic) NSInteger selectedSegmentIndex;
@property(nonatomic, readonly) NSUInteger numberOfSegments;
- (instancetype)initWithItems:(NSArray*)titles;
- (NSString*)titleForSegmentAtIndex:(NSUInteger)index;
- (void)setTitle:(NSString*)title forSegmentAtIndex:(NSUInteger)index;
@end
