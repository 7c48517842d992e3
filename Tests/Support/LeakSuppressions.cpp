// Part of every test program that looks for leaks.

// The TLS library's state of a thread goes when the thread ends, unless the process is ending as
// well: then the hook that would free it is gone already. A session's thread may be caught at that.
extern "C" const char* __lsan_default_suppressions() { return "leak:CRYPTO_zalloc\n"; }
