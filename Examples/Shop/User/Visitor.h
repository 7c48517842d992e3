#pragma once
#import <Foundation/Foundation.h>

@class Ledger;

// Who is logged on at the shop. While it is being told of another user, it does not answer.
@interface Visitor : NSObject {
    NSCondition* _condition;
    Ledger* _ledger;
    NSString* _name;
    NSString* _next;
    BOOL _mayChange;
    NSInteger _asked;
}
- (instancetype)initWithLedger:(Ledger*)ledger name:(NSString*)name;
- (NSString*)name;                  // any thread
- (NSString*)nextToken;             // any thread
- (void)becomeNext:(NSString*)name; // when it is asked the next time, and then waits …
- (void)change;                     // … for this
@end
