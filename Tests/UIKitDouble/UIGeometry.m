#import <UIKit/UIGeometry.h>

@implementation NSIndexPath (UIKit)
+ (NSIndexPath*)indexPathForRow:(NSInteger)row inSection:(NSInteger)section {
    NSUInteger indexes[] = {(NSUInteger)section, (NSUInteger)row};
    return [NSIndexPath indexPathWithIndexes:indexes length:2];
}
+ (NSIndexPath*)indexPathForItem:(NSInteger)item inSection:(NSInteger)section {
    return [self indexPathForRow:item inSection:section];
}
- (NSInteger)section {
    return (NSInteger)[self indexAtPosition:0];
}
- (NSInteger)row {
    return (NSInteger)[self indexAtPosition:1];
}
- (NSInteger)item {
    return [self row];
}
@end
