// Linked into every test program. Asking for more memory than there is must fail in the program's
// own way under the address sanitizer too, which would end the process by default. A build without
// sanitizers never calls this.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
