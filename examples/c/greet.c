// A program in C that uses components:
//     greet_in_c NAME [BUNDLE]     greets by the component "Example.GreeterInC", and lists the texts of a bundle
#include "greeter.h"

#include <stdio.h>

static int fail(const char* operation, int32_t result)
{
    const char16_t* const text = VXResultGetText(result);
    char narrow[256] = "unknown";
    if (text != NULL)
        VXUnicodeToAnsi(text, -1, narrow, sizeof narrow);
    fflush(stdout);
    fprintf(stderr, "greet_in_c: %s: %s (0x%08X)\n", operation, narrow, (unsigned)result);
    return 1;
}

static void print(const IVXCharBuffer* text)
{
    char narrow[1024];
    const int32_t result = IVXCharBuffer_GetUtf8(text, narrow, sizeof narrow);
    puts(result < 0 ? "(a long text)" : narrow);
}

static int32_t greet(IGreeter* greeter, const char* name)
{
    IVXCharBuffer* given = NULL;
    IVXCharBuffer* greeting = NULL;
    int32_t result = IVXCharBuffer_NewUtf8(name, -1, &given);
    if (result >= 0)
        result = IVXCharBuffer_New(u"", 0, &greeting);
    if (result >= 0)
        result = greeter->operations->Greet(greeter, IVXCharBuffer_GetData(given), greeting);
    if (result >= 0)
        print(greeting);
    VX_RELEASE_OBJECT(greeting);
    VX_RELEASE_OBJECT(given);
    return result;
}

static int32_t list(const char* progId)
{
    IVXCharBuffer* name = NULL;
    IVXCharBuffer* key = NULL;
    IVXResourceBundle* bundle = NULL;
    int32_t count = 0;
    int32_t result = IVXCharBuffer_NewUtf8(progId, -1, &name);
    if (result >= 0)
        result = IVXResourceBundle_Create(IVXCharBuffer_GetData(name), &bundle);
    if (result >= 0)
        result = IVXCharBuffer_New(u"", 0, &key);
    if (result >= 0)
        result = IVXResourceBundle_GetCount(bundle, &count);
    for (int32_t i = 0; i < count && result >= 0; ++i) {
        result = IVXResourceBundle_GetResource(bundle, i, key, NULL);
        if (result >= 0)
            print(key);
    }
    VX_RELEASE_OBJECT(bundle);
    VX_RELEASE_OBJECT(key);
    VX_RELEASE_OBJECT(name);
    return result;
}

int main(int argc, char** argv)
{
    if (argc < 2) {
        fputs("Usage: greet_in_c NAME [BUNDLE]\n", stderr);
        return 2;
    }
    IVXUnknown* object = NULL;
    int32_t result = IVXUnknown_Create(u"Example.GreeterInC", &object);
    if (result < 0)
        return fail("Example.GreeterInC", result);
    void* view = NULL;
    result = IVXUnknown_QueryInterface(object, &IID_IGreeter, &view);
    IGreeter* greeter = (IGreeter*)view;
    if (result >= 0)
        result = greet(greeter, argv[1]);
    VX_RELEASE_OBJECT(greeter);
    VX_RELEASE_OBJECT(object);
    if (result < 0)
        return fail("greet", result);

    // The same by the identifier of the class
    result = IVXUnknown_CreateClass(&CLASS_GREETER, &object);
    if (result < 0)
        return fail("the class of the greeter", result);
    VX_RELEASE_OBJECT(object);

    if (argc > 2 && (result = list(argv[2])) < 0)
        return fail(argv[2], result);
    printf("%d unloaded\n", (int)VXComFreeUnusedLibraries());
    return 0;
}
