// For programs that ask for more memory than any machine has: the allocation returns null, and the sanitizer does not
// report it.
#include "vxsys/Api.h"

extern "C" VXSYS_API const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

extern "C" VXSYS_API const char* __tsan_default_options();
extern "C" const char* __tsan_default_options()
{
    return "allocator_may_return_null=1";
}
