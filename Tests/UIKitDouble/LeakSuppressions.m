// How a sanitizer is to look for leaks in a program with GCC's runtime. In the program, because it is run
// while it is built.
#import <Foundation/Foundation.h>

#if __has_feature(address_sanitizer)
const char* __asan_default_options(void);
const char* __lsan_default_suppressions(void);

// Foundation keeps no frame pointers: without the slow way every object would come from nowhere.
__attribute__((used, visibility("default"))) const char* __asan_default_options(void) {
    return "fast_unwind_on_malloc=0";
}

// What the runtime notes of each class, and what a class makes for itself when the runtime initialises it,
// stays. An object that anybody else makes has no frame of the runtime in its stack.
__attribute__((used, visibility("default"))) const char* __lsan_default_suppressions(void) {
    return "leak:libobjc.so\n";
}
#endif
