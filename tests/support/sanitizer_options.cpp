// Linked into every test program. Asking for more memory than there is must fail in the program's
// own way under the address and thread sanitizers too, which would end the process by default. A
// build without sanitizers never calls these.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }
