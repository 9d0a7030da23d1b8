// Part of the launcher in the sanitize build only. Of what GCC's Objective-C runtime allocates it
// drops pointers at its start, and objects live until the process ends.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:objc_malloc\nleak:objc_calloc\n";
}
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
