// A component library in C with one class, "Example.GreeterInC". It greets by name, for programs in C and in C++.
#include "greeter.h"

typedef struct Greeter {
    IGreeter view; // first: a pointer to it is a pointer to the object
    uint32_t count;
} Greeter;

static int32_t create(IVXUnknown* outer, const _GUID* iid, void** object);

static const VXComponentClass g_classes[] = {
    {&CLASS_GREETER, create, u"Example.GreeterInC.1", u"Example.GreeterInC", u"Greets by name, in C"},
    {NULL, NULL, NULL, NULL, NULL},
};
static VXComponentModule g_module = {g_classes, 0};

static int32_t queryInterface(IGreeter* self, const _GUID* iid, void** out)
{
    if (out == NULL)
        return VX_RESULT_POINTER;
    *out = NULL;
    if (!VXIsSameGuid(iid, &VX_IID_IVXUnknown) && !VXIsSameGuid(iid, &IID_IGreeter))
        return VX_RESULT_NO_INTERFACE;
    self->operations->AddRef(self);
    *out = self;
    return VX_RESULT_OK;
}

static uint32_t addRef(const IGreeter* self)
{
    return VXCountUp(&((Greeter*)self)->count);
}

static uint32_t release(const IGreeter* self)
{
    const uint32_t left = VXCountDown(&((Greeter*)self)->count);
    if (left == 0) {
        VXMemFree((void*)self);
        VXComponentUnlock(&g_module);
    }
    return left;
}

static int32_t greet(IGreeter* self, const char16_t* name, IVXCharBuffer* text)
{
    static const char16_t GREETING[] = u"Greetings, ";
    const int32_t greetingLength = (int32_t)(sizeof GREETING / sizeof *GREETING) - 1;

    (void)self;
    if (name == NULL || text == NULL)
        return VX_RESULT_POINTER;
    const int32_t length = greetingLength + VXStrLenW(name);
    char16_t* units = NULL;
    const int32_t result = IVXCharBuffer_GetWriteLock(text, length, &units);
    if (result < 0)
        return result;
    for (int32_t i = 0; i < length; ++i)
        units[i] = i < greetingLength ? GREETING[i] : name[i - greetingLength];
    return IVXCharBuffer_ReleaseWriteLock(text, length);
}

static int32_t create(IVXUnknown* outer, const _GUID* iid, void** object)
{
    static const IGreeterOperations OPERATIONS = {queryInterface, addRef, release, greet};

    if (outer != NULL)
        return VX_RESULT_NO_AGGREGATION;
    Greeter* const greeter = (Greeter*)VXMemAlloc(sizeof(Greeter));
    if (greeter == NULL)
        return VX_RESULT_OUT_OF_MEMORY;
    greeter->view.operations = &OPERATIONS;
    greeter->count = 1;
    VXComponentLock(&g_module);
    const int32_t result = queryInterface(&greeter->view, iid, object);
    release(&greeter->view);
    return result;
}

VX_COMPONENT_LIBRARY_C(g_module)
