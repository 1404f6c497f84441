/* A host without the C++ runtime: it loads the library, uses it and unloads it, twice. Then it does so with a library of
   a user whose threads have not ended yet. Usage: unload_host LIBRARY USER */
#include "vx/text/charset/EncInfo.h"

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

static int is_mapped(const char* name)
{
    char line[4096];
    int found = 0;
    FILE* maps = fopen("/proc/self/maps", "r");
    while (maps != NULL && fgets(line, sizeof line, maps) != NULL)
        found |= strstr(line, name) != NULL;
    if (maps != NULL)
        fclose(maps);
    return found;
}

static int fail(int code, const char* words)
{
    fprintf(stderr, "%s\n", words);
    return code;
}

static int use(const char* library)
{
    int32_t (*get_info)(const char16_t*, VXEncInfo*);
    const void* (*class_for_name)(const char16_t*);
    void** global_lock;
    VXEncInfo info;
    void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == NULL)
        return fail(1, dlerror());
    *(void**)&get_info = dlsym(handle, "VXGetEncInfoByName");
    if (get_info == NULL || get_info(u"us-ascii", &info) != 0 || info.codePage != 20127)
        return fail(2, "the encodings are not there");
    *(void**)&class_for_name = dlsym(handle, "_ZN2vx5Class7forNameEPKDs"); /* vx::Class::forName(char16_t const*) */
    if (class_for_name == NULL || class_for_name(u"CVXString") == NULL)
        return fail(5, "the classes are not there");
    global_lock = dlsym(handle, "g_pGlobalLock");
    if (global_lock == NULL || *global_lock == NULL)
        return fail(6, "the global lock is not there");
    if (!is_mapped("libvxlib4") || !is_mapped("libvxsys4") || dlclose(handle) != 0)
        return 3;
    if (is_mapped("libvxlib4") || is_mapped("libvxsys4"))
        return fail(4, "the library stays in the process");
    return 0;
}

static int leave_threads(const char* user)
{
    int (*drop_processors)(void);
    void* handle = dlopen(user, RTLD_NOW | RTLD_LOCAL);
    if (handle == NULL)
        return fail(7, dlerror());
    *(void**)&drop_processors = dlsym(handle, "drop_processors");
    if (drop_processors == NULL || drop_processors() != 4)
        return fail(8, "entries are lost");
    if (dlclose(handle) != 0 || is_mapped("libvxlib4") || is_mapped("libvxsys4"))
        return fail(9, "the library stays in the process");
    return 0;
}

int main(int count, char** arguments)
{
    int round;
    if (count != 3 || is_mapped("libstdc++"))
        return 64;
    for (round = 0; round < 2; ++round) {
        const int failure = use(arguments[1]);
        if (failure != 0) {
            fprintf(stderr, "round %d\n", round);
            return failure;
        }
    }
    for (round = 0; round < 20; ++round) {
        const int failure = leave_threads(arguments[2]);
        if (failure != 0)
            return failure;
    }
    puts("loaded, used and gone, twice, and with threads");
    return 0;
}
