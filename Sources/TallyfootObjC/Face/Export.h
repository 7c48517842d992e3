#pragma once

// Marks what a host may link against. With only the class method below, an initialiser is not for hosts.
#define TALLYFOOT_OBJC_EXPORT __attribute__((visibility("default")))
#define TALLYFOOT_OBJC_UNAVAILABLE __attribute__((unavailable("it has no values of its own")))
