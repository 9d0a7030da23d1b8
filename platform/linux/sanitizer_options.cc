// In the sanitize build only: what the Objective-C runtime allocates lives until the process ends.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:objc_malloc\nleak:objc_calloc\n";
}
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
