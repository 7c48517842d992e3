#pragma once

// Marks what a host may link against; everything else stays hidden inside the library.
#define TALLYFOOT_EXPORT __attribute__((visibility("default")))

// A part of an exported class that nobody outside links against.
#define TALLYFOOT_INTERNAL __attribute__((visibility("hidden")))
