#include "ObjC/EarlySymbols.h"

NSArray* earlySymbols = nil;

@interface NSThread (EarlySymbols)
@end

@implementation NSThread (EarlySymbols)

+ (NSArray*)callStackSymbols {
    return earlySymbols;
}

@end
