#import "Basket.h"

@implementation Basket
@synthesize lines = _lines;

- (instancetype)init {
    if ((self = [super init])) _lines = [[NSMutableArray alloc] init];
    return self;
}

- (void)dealloc {
    [_lines release];
    [super dealloc];
}

- (void)add:(Product*)product {
    [_lines addObject:product];
}

- (void)removeLineAtIndex:(NSUInteger)index {
    if (index < [_lines count]) [_lines removeObjectAtIndex:index];
}

- (void)empty {
    [_lines removeAllObjects];
}
@end
