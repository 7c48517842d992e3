// What the runtime and Foundation keep until the process ends; also while this program lists its tests.

extern "C" const char* __lsan_default_suppressions();

extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\nleak:libgnustep-base.so\n";
}
