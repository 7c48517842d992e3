// For a program that is made to crash: how the sanitizers are to take that.

// What a crash leaves behind is no leak.
extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off() { return 1; } // NOLINT: its name for it

// The hook ends with `exit`, whose handlers take and release memory: after the record, and on purpose.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options() { // NOLINT: its name for it
    return "report_signal_unsafe=0";
}
