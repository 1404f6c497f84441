#pragma once

#include <vx/c/vxlib4.h>

// The interface IGreeter of examples/component for C, written by hand: the operations of IVXUnknown come first.
typedef struct IGreeter IGreeter;

typedef struct IGreeterOperations {
    int32_t (*QueryInterface)(IGreeter* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IGreeter* self);
    uint32_t (*Release)(const IGreeter* self);
    int32_t (*Greet)(IGreeter* self, const char16_t* name, IVXCharBuffer* text);
} IGreeterOperations;

struct IGreeter {
    const IGreeterOperations* operations;
};

static const _GUID IID_IGreeter = {0x5DCE0B41, 0x3E1C, 0x4E02, {0x9A, 0x55, 0x0E, 0x8B, 0x27, 0x61, 0xC4, 0x10}};
static const _GUID CLASS_GREETER = {0x2F6C71D4, 0x0B83, 0x4E9A, {0xA1, 0x7D, 0x5C, 0x39, 0xE6, 0x02, 0xB8, 0x4F}};
