#pragma once

// Marks what a host may link against; everything else stays hidden inside the library.
#define TALLYFOOT_EXPORT __attribute__((visibility("default")))
