#pragma once

// Marks what a host may link against, and an initialiser that no host may call.
#define TALLYFOOT_OBJC_EXPORT __attribute__((visibility("default")))
#define TALLYFOOT_OBJC_UNAVAILABLE __attribute__((unavailable("it has no values of its own")))
