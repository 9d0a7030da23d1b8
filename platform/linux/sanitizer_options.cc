// Part of the launcher in the sanitize build only.

// GCC's Objective-C runtime drops its last pointers to some of its own start-up allocations, and
// the objects of the platform stand-in live until the process ends.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:objc_malloc\nleak:objc_calloc\n";
}
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
