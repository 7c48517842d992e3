// How a sanitizer is to look for leaks in a program with GCC's runtime. In the program, because it is run
// while it is built. Foundation keeps no frame pointers, so an object that leaks shows only where Foundation
// took its memory; ASAN_OPTIONS=fast_unwind_on_malloc=0 shows the rest, and takes ten times as long.
#import <Foundation/Foundation.h>

#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>

const char* __lsan_default_suppressions(void);

// What the runtime notes of each class stays.
__attribute__((used, visibility("default"))) const char* __lsan_default_suppressions(void) {
    return "leak:libobjc.so\n";
}

@interface FirstUse : NSObject
@end

@implementation FirstUse

// So does what a class makes for itself when it is first used: here, where nobody looks.
+ (void)load {
    __lsan_disable();
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    [NSMutableArray array];
    [NSMutableDictionary dictionary];
    [NSMutableSet set];
    [NSMutableString string];
    [NSNumber numberWithInt:1];
    [NSDate date];
    [NSThread currentThread];
    [[NSArray arrayWithObjects:@"b", @"a", nil] sortedArrayUsingSelector:@selector(compare:)];
    [pool release];
    __lsan_enable();
}

@end
#endif
