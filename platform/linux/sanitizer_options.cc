// Part of the launcher in the sanitize build only.

// GCC's Objective-C runtime drops its last pointers to some of its own start-up allocations.
extern "C" const char* __lsan_default_suppressions() { return "leak:objc_malloc\n"; }
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
