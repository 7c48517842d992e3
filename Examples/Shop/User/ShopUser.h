#pragma once
#import "Ledger.h"

#import <UIKit/UIKit.h>
#include <stdint.h>

// Walks through the shop, touching only what a user could. What to do next is drawn from numbers that the
// seed decides, so that the same seed gives the same walk. Notes in the ledger what each touch must give.
@interface ShopUser : NSObject {
    UIWindow* _window;
    Ledger* _ledger;
    uint64_t _random;
    NSUInteger _tab;
    NSTimeInterval _start;
    NSString* _product; // whose page is open, nil for none
}
- (instancetype)initWithWindow:(UIWindow*)window ledger:(Ledger*)ledger seed:(uint64_t)seed;
// Until exactly so many more records are due; rests between two touches.
- (void)walkForRecords:(NSInteger)records pauseMicroseconds:(unsigned int)pause;
- (NSTimeInterval)secondsWalked; // on the clock of the touches
@end
