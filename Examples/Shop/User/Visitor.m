#import "Visitor.h"

#import "Ledger.h"

@implementation Visitor

- (instancetype)initWithLedger:(Ledger*)ledger name:(NSString*)name {
    if ((self = [super init])) {
        _condition = [[NSCondition alloc] init];
        _ledger = [ledger retain];
        _name = [name copy];
    }
    return self;
}

- (void)dealloc {
    [_condition release];
    [_ledger release];
    [_name release];
    [_next release];
    [super dealloc];
}

- (NSString*)name {
    [_condition lock];
    if (_next) {
        [_ledger tell:@{@"asked" : [NSNumber numberWithBool:YES]}];
        while (!_mayChange) [_condition wait];
        [_name release];
        _name = _next;
        _next = nil;
        [_ledger tell:@{@"userChanged" : [NSNumber numberWithInteger:_ledger.due]}];
    }
    NSString* name = [[_name retain] autorelease];
    [_condition unlock];
    return name;
}

- (NSString*)nextToken {
    [_condition lock];
    NSString* token = [NSString stringWithFormat:@"%@-token-%ld", _name, (long)++_asked];
    [_condition unlock];
    return token;
}

- (void)becomeNext:(NSString*)name {
    [_condition lock];
    [_next release];
    _next = [name copy];
    [_condition unlock];
}

- (void)change {
    [_condition lock];
    _mayChange = YES;
    [_condition broadcast];
    [_condition unlock];
}
@end
