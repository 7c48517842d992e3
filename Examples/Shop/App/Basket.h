#pragma once
#import "Catalogue.h"

// What the user is going to buy.
@interface Basket : NSObject {
    NSMutableArray* _lines;
}
@property(nonatomic, readonly) NSArray* lines; // of products
- (void)add:(Product*)product;
- (void)removeLineAtIndex:(NSUInteger)index;
- (void)empty;
@end
