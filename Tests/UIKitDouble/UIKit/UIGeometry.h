#pragma once
// The platform's geometry in terms of Foundation's.
#import <Foundation/Foundation.h>

typedef NSPoint CGPoint;
typedef NSSize CGSize;
typedef NSRect CGRect;

static inline CGPoint CGPointMake(CGFloat x, CGFloat y) { return NSMakePoint(x, y); }
static inline CGSize CGSizeMake(CGFloat width, CGFloat height) { return NSMakeSize(width, height); }
static inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return NSMakeRect(x, y, width, height);
}
#define CGRectZero NSZeroRect
#define CGPointZero NSZeroPoint

@interface NSIndexPath (UIKit)
+ (NSIndexPath*)indexPathForRow:(NSInteger)row inSection:(NSInteger)section;
+ (NSIndexPath*)indexPathForItem:(NSInteger)item inSection:(NSInteger)section;
- (NSInteger)section;
- (NSInteger)row;
- (NSInteger)item;
@end
