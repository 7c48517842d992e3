#pragma once

// clang's thread-safety analysis, spelled once. Other compilers ignore it.
#if defined(__clang__)
#define TALLYFOOT_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define TALLYFOOT_THREAD_ANNOTATION(x)
#endif

#define TALLYFOOT_CAPABILITY(name) TALLYFOOT_THREAD_ANNOTATION(capability(name))
#define TALLYFOOT_SCOPED_CAPABILITY TALLYFOOT_THREAD_ANNOTATION(scoped_lockable)
#define TALLYFOOT_GUARDED_BY(x) TALLYFOOT_THREAD_ANNOTATION(guarded_by(x))
#define TALLYFOOT_REQUIRES(...) TALLYFOOT_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define TALLYFOOT_EXCLUDES(...) TALLYFOOT_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define TALLYFOOT_ACQUIRE(...) TALLYFOOT_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define TALLYFOOT_TRY_ACQUIRE(...) TALLYFOOT_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define TALLYFOOT_RELEASE(...) TALLYFOOT_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define TALLYFOOT_ASSERT_CAPABILITY(x) TALLYFOOT_THREAD_ANNOTATION(assert_capability(x))
