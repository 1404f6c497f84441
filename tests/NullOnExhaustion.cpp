// For programs that ask for more memory than any machine has: that is an answer there, not a fault of the program.
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
