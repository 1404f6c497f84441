#pragma once

/// The component interfaces for C. Made by scripts/generate-c-header from the C++ headers, which say more about each.
///
/// An object starts with a pointer to the table of its operations. Each operation also has a function, so that
/// `IVXCharBuffer_GetLength(buffer)` calls `GetLength` of `buffer`. Three more functions get an interface, with a
/// reference for the caller, or set `*out` to null and return a negative result: `..._From` asks an object of any
/// interface, `..._Create` makes an object by a ProgID, and `..._CreateClass` by a class identifier. The result codes
/// of the library have the prefix VX_ here.
///
/// For C++ everything is in the namespace vx::c, where a class of that name is known from its own header.

#include "vxsys/Component.h"
#include "vxsys/Guid.h"

// clang-format off

#define VX_RESULT_OK ((int32_t)0)
#define VX_RESULT_FALSE ((int32_t)1)
#define VX_RESULT_NOT_IMPLEMENTED ((int32_t)0x80004001)
#define VX_RESULT_NO_INTERFACE ((int32_t)0x80004002)
#define VX_RESULT_POINTER ((int32_t)0x80004003)
#define VX_RESULT_FAIL ((int32_t)0x80004005)
#define VX_RESULT_NOT_AVAILABLE ((int32_t)0x80004007)
#define VX_RESULT_BUFFER_TOO_SMALL ((int32_t)0x80004009)
#define VX_RESULT_NO_AGGREGATION ((int32_t)0x80040110)
#define VX_RESULT_CLASS_NOT_AVAILABLE ((int32_t)0x80040111)
#define VX_RESULT_NOT_FOUND ((int32_t)0x80070002)
#define VX_RESULT_PATH_NOT_FOUND ((int32_t)0x80070003)
#define VX_RESULT_ACCESS_DENIED ((int32_t)0x80070005)
#define VX_RESULT_INVALID_HANDLE ((int32_t)0x80070006)
#define VX_RESULT_OUT_OF_MEMORY ((int32_t)0x8007000E)
#define VX_RESULT_END_OF_FILE ((int32_t)0x80070026)
#define VX_RESULT_INVALID_ARGUMENT ((int32_t)0x80070057)
#define VX_RESULT_DISK_FULL ((int32_t)0x80070070)
#define VX_RESULT_INVALID_NAME ((int32_t)0x8007007B)
#define VX_RESULT_MODULE_NOT_FOUND ((int32_t)0x8007007E)
#define VX_RESULT_SYMBOL_NOT_FOUND ((int32_t)0x8007007F)
#define VX_RESULT_ALREADY_EXISTS ((int32_t)0x800700B7)
#define VX_RESULT_BAD_MODULE ((int32_t)0x800700C1)
#define VX_RESULT_NAME_TOO_LONG ((int32_t)0x800700CE)
#define VX_RESULT_IS_DIRECTORY ((int32_t)0x80070150)
#define VX_RESULT_NOT_PERMITTED ((int32_t)0x80070522)
#define VX_RESULT_TIMED_OUT ((int32_t)0x800705B4)
#define VX_RESULT_INVALID_CHARACTER ((int32_t)0x8BB34101)
#define VX_RESULT_UNMAPPABLE_CHARACTER ((int32_t)0x8BB34102)
#define VX_RESULT_UNKNOWN_ENCODING ((int32_t)0x8BB34103)
#define VX_RESULT_NO_MORE_ITEMS ((int32_t)0x80070103)
#define VX_RESULT_STORE_CORRUPT ((int32_t)0x800703F1)

#ifdef __cplusplus
namespace vx::c {
extern "C" {
#endif

struct IVXUnknown;
struct IFieldIterator;
struct ILogEntry;
struct ILogProcessor;
struct IPropertyKeyIterator;
struct IPropertySet;
struct IVXAcceptor;
struct IVXByteBuffer;
struct IVXChannel;
struct IVXCharBuffer;
struct IVXCharCodec;
struct IVXClassFactory;
struct IVXComparable;
struct IVXComparator;
struct IVXConnector;
struct IVXConnector2;
struct IVXFailureText;
struct IVXLocale;
struct IVXProperty;
struct IVXProperty2;
struct IVXPropertySet;
struct IVXPropertySet2;
struct IVXResourceBundle;
struct IVXTextCodec;
struct IVXTransport;

#ifndef __cplusplus
typedef struct IVXUnknown IVXUnknown;
typedef struct IFieldIterator IFieldIterator;
typedef struct ILogEntry ILogEntry;
typedef struct ILogProcessor ILogProcessor;
typedef struct IPropertyKeyIterator IPropertyKeyIterator;
typedef struct IPropertySet IPropertySet;
typedef struct IVXAcceptor IVXAcceptor;
typedef struct IVXByteBuffer IVXByteBuffer;
typedef struct IVXChannel IVXChannel;
typedef struct IVXCharBuffer IVXCharBuffer;
typedef struct IVXCharCodec IVXCharCodec;
typedef struct IVXClassFactory IVXClassFactory;
typedef struct IVXComparable IVXComparable;
typedef struct IVXComparator IVXComparator;
typedef struct IVXConnector IVXConnector;
typedef struct IVXConnector2 IVXConnector2;
typedef struct IVXFailureText IVXFailureText;
typedef struct IVXLocale IVXLocale;
typedef struct IVXProperty IVXProperty;
typedef struct IVXProperty2 IVXProperty2;
typedef struct IVXPropertySet IVXPropertySet;
typedef struct IVXPropertySet2 IVXPropertySet2;
typedef struct IVXResourceBundle IVXResourceBundle;
typedef struct IVXTextCodec IVXTextCodec;
typedef struct IVXTransport IVXTransport;
#endif

/// Root of all component interfaces: identity and lifetime. Every other interface derives from it and appends its
/// operations after these three. Interfaces have no data, and their operations do not throw.
typedef struct IVXUnknownOperations {
    /// Stores the interface `iid` in `*out`, with a reference for the caller, and returns 0. RESULT_NO_INTERFACE and
    /// null if the object does not have it, RESULT_POINTER for a null `out`. A query for `IVXUnknown` gives the same
    /// pointer for every interface of an object: it is the identity of the object.
    int32_t (*QueryInterface)(IVXUnknown* self, const _GUID* iid, void** out);
    /// Returns the new count.
    uint32_t (*AddRef)(const IVXUnknown* self);
    /// Returns the new count. At 0 the object has been destroyed.
    uint32_t (*Release)(const IVXUnknown* self);
} IVXUnknownOperations;
struct IVXUnknown {
    const IVXUnknownOperations* operations;
};

        static const _GUID VX_IID_IVXUnknown
    = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
static inline int32_t IVXUnknown_QueryInterface(IVXUnknown* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXUnknown_AddRef(const IVXUnknown* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXUnknown_Release(const IVXUnknown* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXUnknown_From(void* object, IVXUnknown** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXUnknown, &made);
    *out = (IVXUnknown*)made;
    return result;
}
static inline int32_t IVXUnknown_Create(const char16_t* progId, IVXUnknown** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXUnknown, &made);
    *out = (IVXUnknown*)made;
    return result;
}
static inline int32_t IVXUnknown_CreateClass(const _GUID* classId, IVXUnknown** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXUnknown, &made);
    *out = (IVXUnknown*)made;
    return result;
}

/// Iterates over the names of an entry's fields.
typedef struct IFieldIteratorOperations {
    int32_t (*QueryInterface)(IFieldIterator* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IFieldIterator* self);
    uint32_t (*Release)(const IFieldIterator* self);
    /// 0 while there are more names, 1 at the end.
    int32_t (*HasNext)(IFieldIterator* self);
    /// Copies the next name into `out`.
    int32_t (*Next)(IFieldIterator* self, IVXCharBuffer* out);
} IFieldIteratorOperations;
struct IFieldIterator {
    const IFieldIteratorOperations* operations;
};

        static const _GUID VX_IID_IFieldIterator
    = {0x2F354F81, 0xAC82, 0x44A2, {0x9B, 0x24, 0xED, 0x2C, 0xED, 0x85, 0x71, 0x09}};
static inline int32_t IFieldIterator_QueryInterface(IFieldIterator* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IFieldIterator_AddRef(const IFieldIterator* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IFieldIterator_Release(const IFieldIterator* self)
{
    return self->operations->Release(self);
}
static inline int32_t IFieldIterator_HasNext(IFieldIterator* self)
{
    return self->operations->HasNext(self);
}
static inline int32_t IFieldIterator_Next(IFieldIterator* self, IVXCharBuffer* out)
{
    return self->operations->Next(self, out);
}
static inline int32_t IFieldIterator_From(void* object, IFieldIterator** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IFieldIterator, &made);
    *out = (IFieldIterator*)made;
    return result;
}
static inline int32_t IFieldIterator_Create(const char16_t* progId, IFieldIterator** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IFieldIterator, &made);
    *out = (IFieldIterator*)made;
    return result;
}
static inline int32_t IFieldIterator_CreateClass(const _GUID* classId, IFieldIterator** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IFieldIterator, &made);
    *out = (IFieldIterator*)made;
    return result;
}

/// A log entry as components see it. `name` is zero-terminated.
typedef struct ILogEntryOperations {
    int32_t (*QueryInterface)(ILogEntry* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const ILogEntry* self);
    uint32_t (*Release)(const ILogEntry* self);
    /// RESULT_FAIL if the value is not an object of this library.
    int32_t (*SetField)(ILogEntry* self, const char16_t* name, IVXUnknown* value);
    /// The value's interface `iid`, with a reference for the caller; RESULT_FAIL and null if there is no such field.
    int32_t (*GetField)(const ILogEntry* self, const char16_t* name, const _GUID* iid, void** out);
    /// 0 if the field is there, 1 if not.
    int32_t (*HasField)(const ILogEntry* self, const char16_t* name);
    /// An iterator over the names, with a reference for the caller.
    int32_t (*GetFieldIterator)(const ILogEntry* self, IFieldIterator** out);
} ILogEntryOperations;
struct ILogEntry {
    const ILogEntryOperations* operations;
};

        static const _GUID VX_IID_ILogEntry
    = {0x08D884D0, 0x83C1, 0x4881, {0x9A, 0xDF, 0x7A, 0xEA, 0x1A, 0x72, 0x56, 0xEC}};
static inline int32_t ILogEntry_QueryInterface(ILogEntry* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t ILogEntry_AddRef(const ILogEntry* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t ILogEntry_Release(const ILogEntry* self)
{
    return self->operations->Release(self);
}
static inline int32_t ILogEntry_SetField(ILogEntry* self, const char16_t* name, IVXUnknown* value)
{
    return self->operations->SetField(self, name, value);
}
static inline int32_t ILogEntry_GetField(const ILogEntry* self, const char16_t* name, const _GUID* iid, void** out)
{
    return self->operations->GetField(self, name, iid, out);
}
static inline int32_t ILogEntry_HasField(const ILogEntry* self, const char16_t* name)
{
    return self->operations->HasField(self, name);
}
static inline int32_t ILogEntry_GetFieldIterator(const ILogEntry* self, IFieldIterator** out)
{
    return self->operations->GetFieldIterator(self, out);
}
static inline int32_t ILogEntry_From(void* object, ILogEntry** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_ILogEntry, &made);
    *out = (ILogEntry*)made;
    return result;
}
static inline int32_t ILogEntry_Create(const char16_t* progId, ILogEntry** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_ILogEntry, &made);
    *out = (ILogEntry*)made;
    return result;
}
static inline int32_t ILogEntry_CreateClass(const _GUID* classId, ILogEntry** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_ILogEntry, &made);
    *out = (ILogEntry*)made;
    return result;
}

/// A processor as a component. The library itself implements none.
typedef struct ILogProcessorOperations {
    int32_t (*QueryInterface)(ILogProcessor* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const ILogProcessor* self);
    uint32_t (*Release)(const ILogProcessor* self);
    /// The caller owns the entry: a processor that keeps it after the call adds a reference. A negative result is a
    /// failure.
    int32_t (*Process)(ILogProcessor* self, ILogEntry* entry);
} ILogProcessorOperations;
struct ILogProcessor {
    const ILogProcessorOperations* operations;
};

        static const _GUID VX_IID_ILogProcessor
    = {0x85B221C7, 0x0ED6, 0x4AFA, {0xA7, 0xB7, 0x2E, 0xFC, 0xBE, 0x5B, 0x9C, 0xD7}};
static inline int32_t ILogProcessor_QueryInterface(ILogProcessor* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t ILogProcessor_AddRef(const ILogProcessor* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t ILogProcessor_Release(const ILogProcessor* self)
{
    return self->operations->Release(self);
}
static inline int32_t ILogProcessor_Process(ILogProcessor* self, ILogEntry* entry)
{
    return self->operations->Process(self, entry);
}
static inline int32_t ILogProcessor_From(void* object, ILogProcessor** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_ILogProcessor, &made);
    *out = (ILogProcessor*)made;
    return result;
}
static inline int32_t ILogProcessor_Create(const char16_t* progId, ILogProcessor** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_ILogProcessor, &made);
    *out = (ILogProcessor*)made;
    return result;
}
static inline int32_t ILogProcessor_CreateClass(const _GUID* classId, ILogProcessor** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_ILogProcessor, &made);
    *out = (ILogProcessor*)made;
    return result;
}

/// Iterates over the keys of a set.
typedef struct IPropertyKeyIteratorOperations {
    int32_t (*QueryInterface)(IPropertyKeyIterator* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IPropertyKeyIterator* self);
    uint32_t (*Release)(const IPropertyKeyIterator* self);
    /// Not 0 after the last key.
    int32_t (*IsAtEnd)(IPropertyKeyIterator* self);
    /// The next key, as an `IVXCharBuffer` with a reference for the caller.
    int32_t (*GetNext)(IPropertyKeyIterator* self, const _GUID* iid, void** key);
} IPropertyKeyIteratorOperations;
struct IPropertyKeyIterator {
    const IPropertyKeyIteratorOperations* operations;
};

        static const _GUID VX_IID_IPropertyKeyIterator
    = {0xD9CFADA3, 0x8902, 0x422C, {0xB8, 0xC5, 0x54, 0x7A, 0xA0, 0x7E, 0xF6, 0xB0}};
static inline int32_t IPropertyKeyIterator_QueryInterface(IPropertyKeyIterator* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IPropertyKeyIterator_AddRef(const IPropertyKeyIterator* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IPropertyKeyIterator_Release(const IPropertyKeyIterator* self)
{
    return self->operations->Release(self);
}
static inline int32_t IPropertyKeyIterator_IsAtEnd(IPropertyKeyIterator* self)
{
    return self->operations->IsAtEnd(self);
}
static inline int32_t IPropertyKeyIterator_GetNext(IPropertyKeyIterator* self, const _GUID* iid, void** key)
{
    return self->operations->GetNext(self, iid, key);
}
static inline int32_t IPropertyKeyIterator_From(void* object, IPropertyKeyIterator** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IPropertyKeyIterator, &made);
    *out = (IPropertyKeyIterator*)made;
    return result;
}
static inline int32_t IPropertyKeyIterator_Create(const char16_t* progId, IPropertyKeyIterator** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IPropertyKeyIterator, &made);
    *out = (IPropertyKeyIterator*)made;
    return result;
}
static inline int32_t IPropertyKeyIterator_CreateClass(const _GUID* classId, IPropertyKeyIterator** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IPropertyKeyIterator, &made);
    *out = (IPropertyKeyIterator*)made;
    return result;
}

/// Properties that are passed between components. Keys are zero-terminated. Values are components; a text is a
/// component with `IVXCharBuffer`.
typedef struct IPropertySetOperations {
    int32_t (*QueryInterface)(IPropertySet* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IPropertySet* self);
    uint32_t (*Release)(const IPropertySet* self);
    int32_t (*Set)(IPropertySet* self, const char16_t* key, IVXUnknown* value);
    /// The value's interface `iid`, with a reference for the caller.
    int32_t (*Get)(const IPropertySet* self, const char16_t* key, const _GUID* iid, void** result);
    /// The old value's interface `iid`, with a reference for the caller.
    int32_t (*Remove)(IPropertySet* self, const char16_t* key, const _GUID* iid, void** result);
    /// The result is an `IPropertyKeyIterator`, if the set can be enumerated.
    int32_t (*GetKeyIterator)(const IPropertySet* self, const _GUID* iid, void** result);
} IPropertySetOperations;
struct IPropertySet {
    const IPropertySetOperations* operations;
};

        static const _GUID VX_IID_IPropertySet
    = {0x6FCCA1A2, 0x5532, 0x4EB8, {0xB8, 0xE0, 0x20, 0xD4, 0xFB, 0x66, 0x23, 0xD6}};
static inline int32_t IPropertySet_QueryInterface(IPropertySet* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IPropertySet_AddRef(const IPropertySet* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IPropertySet_Release(const IPropertySet* self)
{
    return self->operations->Release(self);
}
static inline int32_t IPropertySet_Set(IPropertySet* self, const char16_t* key, IVXUnknown* value)
{
    return self->operations->Set(self, key, value);
}
static inline int32_t IPropertySet_Get(const IPropertySet* self, const char16_t* key, const _GUID* iid, void** result)
{
    return self->operations->Get(self, key, iid, result);
}
static inline int32_t IPropertySet_Remove(IPropertySet* self, const char16_t* key, const _GUID* iid, void** result)
{
    return self->operations->Remove(self, key, iid, result);
}
static inline int32_t IPropertySet_GetKeyIterator(const IPropertySet* self, const _GUID* iid, void** result)
{
    return self->operations->GetKeyIterator(self, iid, result);
}
static inline int32_t IPropertySet_From(void* object, IPropertySet** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IPropertySet, &made);
    *out = (IPropertySet*)made;
    return result;
}
static inline int32_t IPropertySet_Create(const char16_t* progId, IPropertySet** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IPropertySet, &made);
    *out = (IPropertySet*)made;
    return result;
}
static inline int32_t IPropertySet_CreateClass(const _GUID* classId, IPropertySet** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IPropertySet, &made);
    *out = (IPropertySet*)made;
    return result;
}

/// Waits for a party to connect.
typedef struct IVXAcceptorOperations {
    int32_t (*QueryInterface)(IVXAcceptor* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXAcceptor* self);
    uint32_t (*Release)(const IVXAcceptor* self);
    /// The result is a channel, `vx::io::vorb::IVXChannel` for example.
    int32_t (*Accept)(IVXAcceptor* self, const _GUID* iid, void** result);
} IVXAcceptorOperations;
struct IVXAcceptor {
    const IVXAcceptorOperations* operations;
};

        static const _GUID VX_IID_IVXAcceptor
    = {0x57092186, 0xCAA5, 0x4CCF, {0xAC, 0xA7, 0x3B, 0x82, 0xDD, 0xB6, 0xCA, 0x0E}};
static inline int32_t IVXAcceptor_QueryInterface(IVXAcceptor* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXAcceptor_AddRef(const IVXAcceptor* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXAcceptor_Release(const IVXAcceptor* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXAcceptor_Accept(IVXAcceptor* self, const _GUID* iid, void** result)
{
    return self->operations->Accept(self, iid, result);
}
static inline int32_t IVXAcceptor_From(void* object, IVXAcceptor** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXAcceptor, &made);
    *out = (IVXAcceptor*)made;
    return result;
}
static inline int32_t IVXAcceptor_Create(const char16_t* progId, IVXAcceptor** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXAcceptor, &made);
    *out = (IVXAcceptor*)made;
    return result;
}
static inline int32_t IVXAcceptor_CreateClass(const _GUID* classId, IVXAcceptor** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXAcceptor, &made);
    *out = (IVXAcceptor*)made;
    return result;
}

/// The buffer interface with its identifier.
typedef struct IVXByteBufferOperations {
    int32_t (*QueryInterface)(IVXByteBuffer* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXByteBuffer* self);
    uint32_t (*Release)(const IVXByteBuffer* self);
    int (*GetLength)(const IVXByteBuffer* self);
    const signed char* (*GetData)(const IVXByteBuffer* self);
    int32_t (*GetReadLock)(const IVXByteBuffer* self, const signed char** out);
    int32_t (*ReleaseReadLock)(const IVXByteBuffer* self);
    int16_t (*IsWritable)(const IVXByteBuffer* self);
    int32_t (*GetWriteLock)(IVXByteBuffer* self, int minimumLength, signed char** out);
    int32_t (*EnsureCapacity)(IVXByteBuffer* self, int minimumLength, signed char** out);
    int32_t (*ReleaseWriteLock)(IVXByteBuffer* self, int length);
    int32_t (*FreeExtra)(IVXByteBuffer* self);
} IVXByteBufferOperations;
struct IVXByteBuffer {
    const IVXByteBufferOperations* operations;
};

        static const _GUID VX_IID_IVXByteBuffer
    = {0xBD454BEB, 0xD847, 0x40F3, {0xAA, 0xBF, 0x30, 0x83, 0xAC, 0x2A, 0xC5, 0x4B}};
static inline int32_t IVXByteBuffer_QueryInterface(IVXByteBuffer* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXByteBuffer_AddRef(const IVXByteBuffer* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXByteBuffer_Release(const IVXByteBuffer* self)
{
    return self->operations->Release(self);
}
static inline int IVXByteBuffer_GetLength(const IVXByteBuffer* self)
{
    return self->operations->GetLength(self);
}
static inline const signed char* IVXByteBuffer_GetData(const IVXByteBuffer* self)
{
    return self->operations->GetData(self);
}
static inline int32_t IVXByteBuffer_GetReadLock(const IVXByteBuffer* self, const signed char** out)
{
    return self->operations->GetReadLock(self, out);
}
static inline int32_t IVXByteBuffer_ReleaseReadLock(const IVXByteBuffer* self)
{
    return self->operations->ReleaseReadLock(self);
}
static inline int16_t IVXByteBuffer_IsWritable(const IVXByteBuffer* self)
{
    return self->operations->IsWritable(self);
}
static inline int32_t IVXByteBuffer_GetWriteLock(IVXByteBuffer* self, int minimumLength, signed char** out)
{
    return self->operations->GetWriteLock(self, minimumLength, out);
}
static inline int32_t IVXByteBuffer_EnsureCapacity(IVXByteBuffer* self, int minimumLength, signed char** out)
{
    return self->operations->EnsureCapacity(self, minimumLength, out);
}
static inline int32_t IVXByteBuffer_ReleaseWriteLock(IVXByteBuffer* self, int length)
{
    return self->operations->ReleaseWriteLock(self, length);
}
static inline int32_t IVXByteBuffer_FreeExtra(IVXByteBuffer* self)
{
    return self->operations->FreeExtra(self);
}
static inline int32_t IVXByteBuffer_From(void* object, IVXByteBuffer** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXByteBuffer, &made);
    *out = (IVXByteBuffer*)made;
    return result;
}
static inline int32_t IVXByteBuffer_Create(const char16_t* progId, IVXByteBuffer** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXByteBuffer, &made);
    *out = (IVXByteBuffer*)made;
    return result;
}
static inline int32_t IVXByteBuffer_CreateClass(const _GUID* classId, IVXByteBuffer** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXByteBuffer, &made);
    *out = (IVXByteBuffer*)made;
    return result;
}

/// A connection for component code.
typedef struct IVXChannelOperations {
    int32_t (*QueryInterface)(IVXChannel* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXChannel* self);
    uint32_t (*Release)(const IVXChannel* self);
    /// `*length` is the size of the buffer and becomes the number of bytes read, -1 at the end.
    int32_t (*Read)(IVXChannel* self, signed char* bytes, int32_t* length);
    /// `*length` is the number of bytes and becomes the number written.
    int32_t (*Write)(IVXChannel* self, const signed char* bytes, int32_t* length);
    /// Stores in the buffer the text by which another process can inherit the channel. RESULT_NOT_AVAILABLE if it has
    /// none.
    int32_t (*GetInheritanceId)(IVXChannel* self, IVXCharBuffer* out);
} IVXChannelOperations;
struct IVXChannel {
    const IVXChannelOperations* operations;
};

        static const _GUID VX_IID_IVXChannel
    = {0xD2B1BFAE, 0xEC92, 0x4F2F, {0x9D, 0xEC, 0x4D, 0x98, 0xEA, 0x94, 0x59, 0x8C}};
static inline int32_t IVXChannel_QueryInterface(IVXChannel* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXChannel_AddRef(const IVXChannel* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXChannel_Release(const IVXChannel* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXChannel_Read(IVXChannel* self, signed char* bytes, int32_t* length)
{
    return self->operations->Read(self, bytes, length);
}
static inline int32_t IVXChannel_Write(IVXChannel* self, const signed char* bytes, int32_t* length)
{
    return self->operations->Write(self, bytes, length);
}
static inline int32_t IVXChannel_GetInheritanceId(IVXChannel* self, IVXCharBuffer* out)
{
    return self->operations->GetInheritanceId(self, out);
}
static inline int32_t IVXChannel_From(void* object, IVXChannel** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXChannel, &made);
    *out = (IVXChannel*)made;
    return result;
}
static inline int32_t IVXChannel_Create(const char16_t* progId, IVXChannel** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXChannel, &made);
    *out = (IVXChannel*)made;
    return result;
}
static inline int32_t IVXChannel_CreateClass(const _GUID* classId, IVXChannel** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXChannel, &made);
    *out = (IVXChannel*)made;
    return result;
}

/// The buffer interface with its identifier.
typedef struct IVXCharBufferOperations {
    int32_t (*QueryInterface)(IVXCharBuffer* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXCharBuffer* self);
    uint32_t (*Release)(const IVXCharBuffer* self);
    int (*GetLength)(const IVXCharBuffer* self);
    const char16_t* (*GetData)(const IVXCharBuffer* self);
    int32_t (*GetReadLock)(const IVXCharBuffer* self, const char16_t** out);
    int32_t (*ReleaseReadLock)(const IVXCharBuffer* self);
    int16_t (*IsWritable)(const IVXCharBuffer* self);
    int32_t (*GetWriteLock)(IVXCharBuffer* self, int minimumLength, char16_t** out);
    int32_t (*EnsureCapacity)(IVXCharBuffer* self, int minimumLength, char16_t** out);
    int32_t (*ReleaseWriteLock)(IVXCharBuffer* self, int length);
    int32_t (*FreeExtra)(IVXCharBuffer* self);
} IVXCharBufferOperations;
struct IVXCharBuffer {
    const IVXCharBufferOperations* operations;
};

        static const _GUID VX_IID_IVXCharBuffer
    = {0x1F2639A2, 0x1EBC, 0x4E20, {0x85, 0x60, 0x0A, 0xA5, 0x9F, 0x8A, 0xCB, 0x39}};
static inline int32_t IVXCharBuffer_QueryInterface(IVXCharBuffer* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXCharBuffer_AddRef(const IVXCharBuffer* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXCharBuffer_Release(const IVXCharBuffer* self)
{
    return self->operations->Release(self);
}
static inline int IVXCharBuffer_GetLength(const IVXCharBuffer* self)
{
    return self->operations->GetLength(self);
}
static inline const char16_t* IVXCharBuffer_GetData(const IVXCharBuffer* self)
{
    return self->operations->GetData(self);
}
static inline int32_t IVXCharBuffer_GetReadLock(const IVXCharBuffer* self, const char16_t** out)
{
    return self->operations->GetReadLock(self, out);
}
static inline int32_t IVXCharBuffer_ReleaseReadLock(const IVXCharBuffer* self)
{
    return self->operations->ReleaseReadLock(self);
}
static inline int16_t IVXCharBuffer_IsWritable(const IVXCharBuffer* self)
{
    return self->operations->IsWritable(self);
}
static inline int32_t IVXCharBuffer_GetWriteLock(IVXCharBuffer* self, int minimumLength, char16_t** out)
{
    return self->operations->GetWriteLock(self, minimumLength, out);
}
static inline int32_t IVXCharBuffer_EnsureCapacity(IVXCharBuffer* self, int minimumLength, char16_t** out)
{
    return self->operations->EnsureCapacity(self, minimumLength, out);
}
static inline int32_t IVXCharBuffer_ReleaseWriteLock(IVXCharBuffer* self, int length)
{
    return self->operations->ReleaseWriteLock(self, length);
}
static inline int32_t IVXCharBuffer_FreeExtra(IVXCharBuffer* self)
{
    return self->operations->FreeExtra(self);
}
static inline int32_t IVXCharBuffer_From(void* object, IVXCharBuffer** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXCharBuffer, &made);
    *out = (IVXCharBuffer*)made;
    return result;
}
static inline int32_t IVXCharBuffer_Create(const char16_t* progId, IVXCharBuffer** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXCharBuffer, &made);
    *out = (IVXCharBuffer*)made;
    return result;
}
static inline int32_t IVXCharBuffer_CreateClass(const _GUID* classId, IVXCharBuffer** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXCharBuffer, &made);
    *out = (IVXCharBuffer*)made;
    return result;
}

/// An encoding from a component, one character at a time. A codec keeps nothing between characters. One thread at a
/// time.
typedef struct IVXCharCodecOperations {
    int32_t (*QueryInterface)(IVXCharCodec* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXCharCodec* self);
    uint32_t (*Release)(const IVXCharCodec* self);
    /// Writes the name of the encoding into the buffer.
    int32_t (*GetName)(IVXCharCodec* self, IVXCharBuffer* name);
    /// The length of the longest sequence for one character.
    int32_t (*GetMaxBytesPerChar)(IVXCharCodec* self, int32_t* value);
    int32_t (*GetMaxCharsPerByte)(IVXCharCodec* self, int32_t* value);
    /// Decodes the first character. `*length` is the number of bytes available, and becomes the length of the
    /// character, or 0 if more bytes are needed. `*codePoint` is U+FFFD for a sequence without a character. The result
    /// code is ignored.
    int32_t (*ConvertBytes)(IVXCharCodec* self, const signed char* bytes, int32_t* length, uint32_t* codePoint);
    /// Encodes one character into the buffer. An empty buffer and a negative result both mean that there is no mapping.
    int32_t (*ConvertChar)(IVXCharCodec* self, uint32_t codePoint, IVXByteBuffer* bytes);
} IVXCharCodecOperations;
struct IVXCharCodec {
    const IVXCharCodecOperations* operations;
};

        static const _GUID VX_IID_IVXCharCodec
    = {0xE9DE4D9A, 0xBF89, 0x4A97, {0xB9, 0x74, 0x1F, 0x50, 0xBC, 0x5A, 0x8C, 0x61}};
static inline int32_t IVXCharCodec_QueryInterface(IVXCharCodec* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXCharCodec_AddRef(const IVXCharCodec* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXCharCodec_Release(const IVXCharCodec* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXCharCodec_GetName(IVXCharCodec* self, IVXCharBuffer* name)
{
    return self->operations->GetName(self, name);
}
static inline int32_t IVXCharCodec_GetMaxBytesPerChar(IVXCharCodec* self, int32_t* value)
{
    return self->operations->GetMaxBytesPerChar(self, value);
}
static inline int32_t IVXCharCodec_GetMaxCharsPerByte(IVXCharCodec* self, int32_t* value)
{
    return self->operations->GetMaxCharsPerByte(self, value);
}
static inline int32_t IVXCharCodec_ConvertBytes(
        IVXCharCodec* self, const signed char* bytes, int32_t* length, uint32_t* codePoint)
{
    return self->operations->ConvertBytes(self, bytes, length, codePoint);
}
static inline int32_t IVXCharCodec_ConvertChar(IVXCharCodec* self, uint32_t codePoint, IVXByteBuffer* bytes)
{
    return self->operations->ConvertChar(self, codePoint, bytes);
}
static inline int32_t IVXCharCodec_From(void* object, IVXCharCodec** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXCharCodec, &made);
    *out = (IVXCharCodec*)made;
    return result;
}
static inline int32_t IVXCharCodec_Create(const char16_t* progId, IVXCharCodec** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXCharCodec, &made);
    *out = (IVXCharCodec*)made;
    return result;
}
static inline int32_t IVXCharCodec_CreateClass(const _GUID* classId, IVXCharCodec** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXCharCodec, &made);
    *out = (IVXCharCodec*)made;
    return result;
}

/// Makes the objects of one class.
typedef struct IVXClassFactoryOperations {
    int32_t (*QueryInterface)(IVXClassFactory* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXClassFactory* self);
    uint32_t (*Release)(const IVXClassFactory* self);
    /// Creates an object and stores its interface `iid`, with a reference for the caller. With an aggregating `outer`,
    /// only the root interface may be requested.
    int32_t (*CreateInstance)(const IVXClassFactory* self, IVXUnknown* outer, const _GUID* iid, void** out);
    /// Keeps the library loaded (not 0), or releases one such lock (0).
    int32_t (*LockServer)(IVXClassFactory* self, int16_t lock);
} IVXClassFactoryOperations;
struct IVXClassFactory {
    const IVXClassFactoryOperations* operations;
};

        static const _GUID VX_IID_IVXClassFactory
    = {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
static inline int32_t IVXClassFactory_QueryInterface(IVXClassFactory* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXClassFactory_AddRef(const IVXClassFactory* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXClassFactory_Release(const IVXClassFactory* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXClassFactory_CreateInstance(
        const IVXClassFactory* self, IVXUnknown* outer, const _GUID* iid, void** out)
{
    return self->operations->CreateInstance(self, outer, iid, out);
}
static inline int32_t IVXClassFactory_LockServer(IVXClassFactory* self, int16_t lock)
{
    return self->operations->LockServer(self, lock);
}
static inline int32_t IVXClassFactory_From(void* object, IVXClassFactory** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXClassFactory, &made);
    *out = (IVXClassFactory*)made;
    return result;
}
static inline int32_t IVXClassFactory_Create(const char16_t* progId, IVXClassFactory** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXClassFactory, &made);
    *out = (IVXClassFactory*)made;
    return result;
}
static inline int32_t IVXClassFactory_CreateClass(const _GUID* classId, IVXClassFactory** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXClassFactory, &made);
    *out = (IVXClassFactory*)made;
    return result;
}

/// Order and hash of an object for components that do not know `vx::Object`.
typedef struct IVXComparableOperations {
    int32_t (*QueryInterface)(IVXComparable* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXComparable* self);
    uint32_t (*Release)(const IVXComparable* self);
    /// `*result` is below 0, 0 or above 0 if this object sorts before, equal to or after `other`.
    int32_t (*CompareTo)(IVXComparable* self, const IVXUnknown* other, int* result);
    int32_t (*HashCode)(IVXComparable* self, uint32_t* result);
} IVXComparableOperations;
struct IVXComparable {
    const IVXComparableOperations* operations;
};

        static const _GUID VX_IID_IVXComparable
    = {0x72038029, 0xFA65, 0x4255, {0xA9, 0x16, 0x1C, 0x56, 0x80, 0xAC, 0xFE, 0xBF}};
static inline int32_t IVXComparable_QueryInterface(IVXComparable* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXComparable_AddRef(const IVXComparable* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXComparable_Release(const IVXComparable* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXComparable_CompareTo(IVXComparable* self, const IVXUnknown* other, int* result)
{
    return self->operations->CompareTo(self, other, result);
}
static inline int32_t IVXComparable_HashCode(IVXComparable* self, uint32_t* result)
{
    return self->operations->HashCode(self, result);
}
static inline int32_t IVXComparable_From(void* object, IVXComparable** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXComparable, &made);
    *out = (IVXComparable*)made;
    return result;
}
static inline int32_t IVXComparable_Create(const char16_t* progId, IVXComparable** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXComparable, &made);
    *out = (IVXComparable*)made;
    return result;
}
static inline int32_t IVXComparable_CreateClass(const _GUID* classId, IVXComparable** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXComparable, &made);
    *out = (IVXComparable*)made;
    return result;
}

/// Defines order, equality and hash of the elements of a collection.
typedef struct IVXComparatorOperations {
    int32_t (*QueryInterface)(IVXComparator* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXComparator* self);
    uint32_t (*Release)(const IVXComparator* self);
    /// `*result` is below 0, 0 or above 0 if `a` sorts before, equal to or after `b`. Either may be null.
    int32_t (*Compare)(const IVXComparator* self, const IVXUnknown* a, const IVXUnknown* b, int* result);
    /// Elements that compare as 0 have equal hashes.
    int32_t (*Hash)(const IVXComparator* self, const IVXUnknown* a, uint32_t* result);
} IVXComparatorOperations;
struct IVXComparator {
    const IVXComparatorOperations* operations;
};

        static const _GUID VX_IID_IVXComparator
    = {0x176573E2, 0xC217, 0x4F04, {0xAD, 0x8E, 0xE6, 0x77, 0xCA, 0x68, 0x32, 0x45}};
static inline int32_t IVXComparator_QueryInterface(IVXComparator* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXComparator_AddRef(const IVXComparator* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXComparator_Release(const IVXComparator* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXComparator_Compare(
        const IVXComparator* self, const IVXUnknown* a, const IVXUnknown* b, int* result)
{
    return self->operations->Compare(self, a, b, result);
}
static inline int32_t IVXComparator_Hash(const IVXComparator* self, const IVXUnknown* a, uint32_t* result)
{
    return self->operations->Hash(self, a, result);
}
static inline int32_t IVXComparator_From(void* object, IVXComparator** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXComparator, &made);
    *out = (IVXComparator*)made;
    return result;
}
static inline int32_t IVXComparator_Create(const char16_t* progId, IVXComparator** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXComparator, &made);
    *out = (IVXComparator*)made;
    return result;
}
static inline int32_t IVXComparator_CreateClass(const _GUID* classId, IVXComparator** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXComparator, &made);
    *out = (IVXComparator*)made;
    return result;
}

/// Makes connections from its properties. Results are negative for failure.
typedef struct IVXConnectorOperations {
    int32_t (*QueryInterface)(IVXConnector* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXConnector* self);
    uint32_t (*Release)(const IVXConnector* self);
    /// The interface `iid` of a new connection, with a reference for the caller. `name` is ignored.
    int32_t (*Connect)(IVXConnector* self, const char16_t* name, const _GUID* iid, void** result);
    int32_t (*SetProperty)(IVXConnector* self, const char16_t* key, const char16_t* value);
    int32_t (*GetProperty)(const IVXConnector* self, const char16_t* key, IVXCharBuffer* value);
} IVXConnectorOperations;
struct IVXConnector {
    const IVXConnectorOperations* operations;
};

        static const _GUID VX_IID_IVXConnector
    = {0xAB2624C9, 0x2B4B, 0x4DD5, {0xB7, 0x6A, 0x77, 0xF5, 0xA9, 0x11, 0x4D, 0xAE}};
static inline int32_t IVXConnector_QueryInterface(IVXConnector* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXConnector_AddRef(const IVXConnector* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXConnector_Release(const IVXConnector* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXConnector_Connect(IVXConnector* self, const char16_t* name, const _GUID* iid, void** result)
{
    return self->operations->Connect(self, name, iid, result);
}
static inline int32_t IVXConnector_SetProperty(IVXConnector* self, const char16_t* key, const char16_t* value)
{
    return self->operations->SetProperty(self, key, value);
}
static inline int32_t IVXConnector_GetProperty(const IVXConnector* self, const char16_t* key, IVXCharBuffer* value)
{
    return self->operations->GetProperty(self, key, value);
}
static inline int32_t IVXConnector_From(void* object, IVXConnector** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXConnector, &made);
    *out = (IVXConnector*)made;
    return result;
}
static inline int32_t IVXConnector_Create(const char16_t* progId, IVXConnector** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXConnector, &made);
    *out = (IVXConnector*)made;
    return result;
}
static inline int32_t IVXConnector_CreateClass(const _GUID* classId, IVXConnector** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXConnector, &made);
    *out = (IVXConnector*)made;
    return result;
}

/// Connects to a party.
typedef struct IVXConnector2Operations {
    int32_t (*QueryInterface)(IVXConnector2* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXConnector2* self);
    uint32_t (*Release)(const IVXConnector2* self);
    /// The result is a channel, `vx::io::vorb::IVXChannel` for example.
    int32_t (*Connect)(IVXConnector2* self, const _GUID* iid, void** result);
} IVXConnector2Operations;
struct IVXConnector2 {
    const IVXConnector2Operations* operations;
};

        static const _GUID VX_IID_IVXConnector2
    = {0x82DB3948, 0x42E3, 0x42B4, {0xBF, 0x80, 0xEC, 0x29, 0x40, 0x12, 0x83, 0x83}};
static inline int32_t IVXConnector2_QueryInterface(IVXConnector2* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXConnector2_AddRef(const IVXConnector2* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXConnector2_Release(const IVXConnector2* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXConnector2_Connect(IVXConnector2* self, const _GUID* iid, void** result)
{
    return self->operations->Connect(self, iid, result);
}
static inline int32_t IVXConnector2_From(void* object, IVXConnector2** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXConnector2, &made);
    *out = (IVXConnector2*)made;
    return result;
}
static inline int32_t IVXConnector2_Create(const char16_t* progId, IVXConnector2** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXConnector2, &made);
    *out = (IVXConnector2*)made;
    return result;
}
static inline int32_t IVXConnector2_CreateClass(const _GUID* classId, IVXConnector2** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXConnector2, &made);
    *out = (IVXConnector2*)made;
    return result;
}

/// The words for failures of a component, whose operations return only result codes.
typedef struct IVXFailureTextOperations {
    int32_t (*QueryInterface)(IVXFailureText* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXFailureText* self);
    uint32_t (*Release)(const IVXFailureText* self);
    /// Stores what is known about the last failed operation of this object. Call it on the thread of that operation,
    /// before any other call. The text is on one line and in English; it is empty if nothing is known.
    int32_t (*GetFailureText)(IVXFailureText* self, IVXCharBuffer* text);
} IVXFailureTextOperations;
struct IVXFailureText {
    const IVXFailureTextOperations* operations;
};

        static const _GUID VX_IID_IVXFailureText
    = {0x70C08156, 0x072E, 0x433F, {0x99, 0x24, 0x28, 0xF6, 0x38, 0x5F, 0x0E, 0x5A}};
static inline int32_t IVXFailureText_QueryInterface(IVXFailureText* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXFailureText_AddRef(const IVXFailureText* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXFailureText_Release(const IVXFailureText* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXFailureText_GetFailureText(IVXFailureText* self, IVXCharBuffer* text)
{
    return self->operations->GetFailureText(self, text);
}
static inline int32_t IVXFailureText_From(void* object, IVXFailureText** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXFailureText, &made);
    *out = (IVXFailureText*)made;
    return result;
}
static inline int32_t IVXFailureText_Create(const char16_t* progId, IVXFailureText** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXFailureText, &made);
    *out = (IVXFailureText*)made;
    return result;
}
static inline int32_t IVXFailureText_CreateClass(const _GUID* classId, IVXFailureText** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXFailureText, &made);
    *out = (IVXFailureText*)made;
    return result;
}

/// A language, a country and a variant. Each operation writes its text into the buffer. Display names are in the
/// language of the locale that is passed, or of the user.
typedef struct IVXLocaleOperations {
    int32_t (*QueryInterface)(IVXLocale* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXLocale* self);
    uint32_t (*Release)(const IVXLocale* self);
    int32_t (*GetLanguage)(IVXLocale* self, IVXCharBuffer* text);
    int32_t (*GetCountry)(IVXLocale* self, IVXCharBuffer* text);
    int32_t (*GetVariant)(IVXLocale* self, IVXCharBuffer* text);
    int32_t (*GetDisplayLanguage)(IVXLocale* self, IVXCharBuffer* text);
    int32_t (*GetDisplayLanguageLoc)(IVXLocale* self, IVXCharBuffer* text, IVXLocale* inLocale);
    int32_t (*GetDisplayCountry)(IVXLocale* self, IVXCharBuffer* text);
    int32_t (*GetDisplayCountryLoc)(IVXLocale* self, IVXCharBuffer* text, IVXLocale* inLocale);
    int32_t (*GetDisplayVariant)(IVXLocale* self, IVXCharBuffer* text);
    int32_t (*GetDisplayVariantLoc)(IVXLocale* self, IVXCharBuffer* text, IVXLocale* inLocale);
    int32_t (*GetDisplayName)(IVXLocale* self, IVXCharBuffer* text);
    int32_t (*GetDisplayNameLoc)(IVXLocale* self, IVXCharBuffer* text, IVXLocale* inLocale);
    /// The name, "en_US@euro" for example.
    int32_t (*ToString)(IVXLocale* self, IVXCharBuffer* text);
} IVXLocaleOperations;
struct IVXLocale {
    const IVXLocaleOperations* operations;
};

        static const _GUID VX_IID_IVXLocale
    = {0xF5E59574, 0x1FAA, 0x4F07, {0x85, 0x83, 0xE2, 0xC2, 0x81, 0xC6, 0xF7, 0xE6}};
static inline int32_t IVXLocale_QueryInterface(IVXLocale* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXLocale_AddRef(const IVXLocale* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXLocale_Release(const IVXLocale* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXLocale_GetLanguage(IVXLocale* self, IVXCharBuffer* text)
{
    return self->operations->GetLanguage(self, text);
}
static inline int32_t IVXLocale_GetCountry(IVXLocale* self, IVXCharBuffer* text)
{
    return self->operations->GetCountry(self, text);
}
static inline int32_t IVXLocale_GetVariant(IVXLocale* self, IVXCharBuffer* text)
{
    return self->operations->GetVariant(self, text);
}
static inline int32_t IVXLocale_GetDisplayLanguage(IVXLocale* self, IVXCharBuffer* text)
{
    return self->operations->GetDisplayLanguage(self, text);
}
static inline int32_t IVXLocale_GetDisplayLanguageLoc(IVXLocale* self, IVXCharBuffer* text, IVXLocale* inLocale)
{
    return self->operations->GetDisplayLanguageLoc(self, text, inLocale);
}
static inline int32_t IVXLocale_GetDisplayCountry(IVXLocale* self, IVXCharBuffer* text)
{
    return self->operations->GetDisplayCountry(self, text);
}
static inline int32_t IVXLocale_GetDisplayCountryLoc(IVXLocale* self, IVXCharBuffer* text, IVXLocale* inLocale)
{
    return self->operations->GetDisplayCountryLoc(self, text, inLocale);
}
static inline int32_t IVXLocale_GetDisplayVariant(IVXLocale* self, IVXCharBuffer* text)
{
    return self->operations->GetDisplayVariant(self, text);
}
static inline int32_t IVXLocale_GetDisplayVariantLoc(IVXLocale* self, IVXCharBuffer* text, IVXLocale* inLocale)
{
    return self->operations->GetDisplayVariantLoc(self, text, inLocale);
}
static inline int32_t IVXLocale_GetDisplayName(IVXLocale* self, IVXCharBuffer* text)
{
    return self->operations->GetDisplayName(self, text);
}
static inline int32_t IVXLocale_GetDisplayNameLoc(IVXLocale* self, IVXCharBuffer* text, IVXLocale* inLocale)
{
    return self->operations->GetDisplayNameLoc(self, text, inLocale);
}
static inline int32_t IVXLocale_ToString(IVXLocale* self, IVXCharBuffer* text)
{
    return self->operations->ToString(self, text);
}
static inline int32_t IVXLocale_From(void* object, IVXLocale** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXLocale, &made);
    *out = (IVXLocale*)made;
    return result;
}
static inline int32_t IVXLocale_Create(const char16_t* progId, IVXLocale** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXLocale, &made);
    *out = (IVXLocale*)made;
    return result;
}
static inline int32_t IVXLocale_CreateClass(const _GUID* classId, IVXLocale** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXLocale, &made);
    *out = (IVXLocale*)made;
    return result;
}

/// A key with a value that is read and written as text or as a number. Results are negative for failure.
typedef struct IVXPropertyOperations {
    int32_t (*QueryInterface)(IVXProperty* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXProperty* self);
    uint32_t (*Release)(const IVXProperty* self);
    /// Text results are copied into the buffer. Text arguments are zero-terminated.
    int32_t (*GetKey)(const IVXProperty* self, IVXCharBuffer* key);
    int32_t (*GetValueString)(const IVXProperty* self, IVXCharBuffer* value);
    int32_t (*GetValueLong)(const IVXProperty* self, int32_t* value);
    int32_t (*GetValueDouble)(const IVXProperty* self, double* value);
    int32_t (*SetValueString)(IVXProperty* self, const char16_t* value);
    int32_t (*SetValueLong)(IVXProperty* self, int32_t value);
    int32_t (*SetValueDouble)(IVXProperty* self, double value);
} IVXPropertyOperations;
struct IVXProperty {
    const IVXPropertyOperations* operations;
};

        static const _GUID VX_IID_IVXProperty
    = {0x14B4005F, 0x4168, 0x4BBC, {0xBA, 0x90, 0x3C, 0x67, 0x49, 0xF1, 0x20, 0x95}};
static inline int32_t IVXProperty_QueryInterface(IVXProperty* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXProperty_AddRef(const IVXProperty* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXProperty_Release(const IVXProperty* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXProperty_GetKey(const IVXProperty* self, IVXCharBuffer* key)
{
    return self->operations->GetKey(self, key);
}
static inline int32_t IVXProperty_GetValueString(const IVXProperty* self, IVXCharBuffer* value)
{
    return self->operations->GetValueString(self, value);
}
static inline int32_t IVXProperty_GetValueLong(const IVXProperty* self, int32_t* value)
{
    return self->operations->GetValueLong(self, value);
}
static inline int32_t IVXProperty_GetValueDouble(const IVXProperty* self, double* value)
{
    return self->operations->GetValueDouble(self, value);
}
static inline int32_t IVXProperty_SetValueString(IVXProperty* self, const char16_t* value)
{
    return self->operations->SetValueString(self, value);
}
static inline int32_t IVXProperty_SetValueLong(IVXProperty* self, int32_t value)
{
    return self->operations->SetValueLong(self, value);
}
static inline int32_t IVXProperty_SetValueDouble(IVXProperty* self, double value)
{
    return self->operations->SetValueDouble(self, value);
}
static inline int32_t IVXProperty_From(void* object, IVXProperty** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXProperty, &made);
    *out = (IVXProperty*)made;
    return result;
}
static inline int32_t IVXProperty_Create(const char16_t* progId, IVXProperty** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXProperty, &made);
    *out = (IVXProperty*)made;
    return result;
}
static inline int32_t IVXProperty_CreateClass(const _GUID* classId, IVXProperty** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXProperty, &made);
    *out = (IVXProperty*)made;
    return result;
}

/// As above, with any component as the value.
typedef struct IVXProperty2Operations {
    int32_t (*QueryInterface)(IVXProperty2* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXProperty2* self);
    uint32_t (*Release)(const IVXProperty2* self);
    int32_t (*GetKey)(const IVXProperty2* self, IVXCharBuffer* key);
    int32_t (*GetValueString)(const IVXProperty2* self, IVXCharBuffer* value);
    int32_t (*GetValueLong)(const IVXProperty2* self, int32_t* value);
    int32_t (*GetValueDouble)(const IVXProperty2* self, double* value);
    int32_t (*SetValueString)(IVXProperty2* self, const char16_t* value);
    int32_t (*SetValueLong)(IVXProperty2* self, int32_t value);
    int32_t (*SetValueDouble)(IVXProperty2* self, double value);
    /// The interface `iid` of the value, with a reference for the caller.
    int32_t (*GetValue)(const IVXProperty2* self, const _GUID* iid, void** result);
    /// Keeps a reference on the value.
    int32_t (*SetValue)(IVXProperty2* self, IVXUnknown* value);
} IVXProperty2Operations;
struct IVXProperty2 {
    const IVXProperty2Operations* operations;
};

        static const _GUID VX_IID_IVXProperty2
    = {0x247518DB, 0x853C, 0x4F28, {0x9E, 0x39, 0x83, 0xC9, 0x1C, 0x00, 0xF8, 0xE2}};
static inline int32_t IVXProperty2_QueryInterface(IVXProperty2* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXProperty2_AddRef(const IVXProperty2* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXProperty2_Release(const IVXProperty2* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXProperty2_GetKey(const IVXProperty2* self, IVXCharBuffer* key)
{
    return self->operations->GetKey(self, key);
}
static inline int32_t IVXProperty2_GetValueString(const IVXProperty2* self, IVXCharBuffer* value)
{
    return self->operations->GetValueString(self, value);
}
static inline int32_t IVXProperty2_GetValueLong(const IVXProperty2* self, int32_t* value)
{
    return self->operations->GetValueLong(self, value);
}
static inline int32_t IVXProperty2_GetValueDouble(const IVXProperty2* self, double* value)
{
    return self->operations->GetValueDouble(self, value);
}
static inline int32_t IVXProperty2_SetValueString(IVXProperty2* self, const char16_t* value)
{
    return self->operations->SetValueString(self, value);
}
static inline int32_t IVXProperty2_SetValueLong(IVXProperty2* self, int32_t value)
{
    return self->operations->SetValueLong(self, value);
}
static inline int32_t IVXProperty2_SetValueDouble(IVXProperty2* self, double value)
{
    return self->operations->SetValueDouble(self, value);
}
static inline int32_t IVXProperty2_GetValue(const IVXProperty2* self, const _GUID* iid, void** result)
{
    return self->operations->GetValue(self, iid, result);
}
static inline int32_t IVXProperty2_SetValue(IVXProperty2* self, IVXUnknown* value)
{
    return self->operations->SetValue(self, value);
}
static inline int32_t IVXProperty2_From(void* object, IVXProperty2** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXProperty2, &made);
    *out = (IVXProperty2*)made;
    return result;
}
static inline int32_t IVXProperty2_Create(const char16_t* progId, IVXProperty2** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXProperty2, &made);
    *out = (IVXProperty2*)made;
    return result;
}
static inline int32_t IVXProperty2_CreateClass(const _GUID* classId, IVXProperty2** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXProperty2, &made);
    *out = (IVXProperty2*)made;
    return result;
}

/// Properties by their keys. Results are negative for failure.
typedef struct IVXPropertySetOperations {
    int32_t (*QueryInterface)(IVXPropertySet* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXPropertySet* self);
    uint32_t (*Release)(const IVXPropertySet* self);
    /// Keys and texts are zero-terminated. A text result is copied into the buffer.
    int32_t (*SetString)(IVXPropertySet* self, const char16_t* key, const char16_t* value);
    int32_t (*GetString)(const IVXPropertySet* self, const char16_t* key, IVXCharBuffer* value);
    int32_t (*SetLong)(IVXPropertySet* self, const char16_t* key, int32_t value);
    int32_t (*GetLong)(const IVXPropertySet* self, const char16_t* key, int32_t* value);
    int32_t (*SetDouble)(IVXPropertySet* self, const char16_t* key, double value);
    int32_t (*GetDouble)(const IVXPropertySet* self, const char16_t* key, double* value);
    int32_t (*GetCount)(const IVXPropertySet* self, unsigned int* count);
    /// `index` is below the count. Results, here and below, have a reference for the caller.
    int32_t (*GetProperty)(const IVXPropertySet* self, unsigned int index, IVXProperty** property);
    int32_t (*GetParent)(const IVXPropertySet* self, IVXPropertySet** parent);
} IVXPropertySetOperations;
struct IVXPropertySet {
    const IVXPropertySetOperations* operations;
};

        static const _GUID VX_IID_IVXPropertySet
    = {0x283C8FB3, 0x0034, 0x423C, {0xBC, 0x61, 0x99, 0x6F, 0x88, 0x29, 0xCA, 0xF1}};
static inline int32_t IVXPropertySet_QueryInterface(IVXPropertySet* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXPropertySet_AddRef(const IVXPropertySet* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXPropertySet_Release(const IVXPropertySet* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXPropertySet_SetString(IVXPropertySet* self, const char16_t* key, const char16_t* value)
{
    return self->operations->SetString(self, key, value);
}
static inline int32_t IVXPropertySet_GetString(const IVXPropertySet* self, const char16_t* key, IVXCharBuffer* value)
{
    return self->operations->GetString(self, key, value);
}
static inline int32_t IVXPropertySet_SetLong(IVXPropertySet* self, const char16_t* key, int32_t value)
{
    return self->operations->SetLong(self, key, value);
}
static inline int32_t IVXPropertySet_GetLong(const IVXPropertySet* self, const char16_t* key, int32_t* value)
{
    return self->operations->GetLong(self, key, value);
}
static inline int32_t IVXPropertySet_SetDouble(IVXPropertySet* self, const char16_t* key, double value)
{
    return self->operations->SetDouble(self, key, value);
}
static inline int32_t IVXPropertySet_GetDouble(const IVXPropertySet* self, const char16_t* key, double* value)
{
    return self->operations->GetDouble(self, key, value);
}
static inline int32_t IVXPropertySet_GetCount(const IVXPropertySet* self, unsigned int* count)
{
    return self->operations->GetCount(self, count);
}
static inline int32_t IVXPropertySet_GetProperty(const IVXPropertySet* self, unsigned int index, IVXProperty** property)
{
    return self->operations->GetProperty(self, index, property);
}
static inline int32_t IVXPropertySet_GetParent(const IVXPropertySet* self, IVXPropertySet** parent)
{
    return self->operations->GetParent(self, parent);
}
static inline int32_t IVXPropertySet_From(void* object, IVXPropertySet** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXPropertySet, &made);
    *out = (IVXPropertySet*)made;
    return result;
}
static inline int32_t IVXPropertySet_Create(const char16_t* progId, IVXPropertySet** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXPropertySet, &made);
    *out = (IVXPropertySet*)made;
    return result;
}
static inline int32_t IVXPropertySet_CreateClass(const _GUID* classId, IVXPropertySet** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXPropertySet, &made);
    *out = (IVXPropertySet*)made;
    return result;
}

/// As above, with any component as a value.
typedef struct IVXPropertySet2Operations {
    int32_t (*QueryInterface)(IVXPropertySet2* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXPropertySet2* self);
    uint32_t (*Release)(const IVXPropertySet2* self);
    int32_t (*SetString)(IVXPropertySet2* self, const char16_t* key, const char16_t* value);
    int32_t (*GetString)(const IVXPropertySet2* self, const char16_t* key, IVXCharBuffer* value);
    int32_t (*SetLong)(IVXPropertySet2* self, const char16_t* key, int32_t value);
    int32_t (*GetLong)(const IVXPropertySet2* self, const char16_t* key, int32_t* value);
    int32_t (*SetDouble)(IVXPropertySet2* self, const char16_t* key, double value);
    int32_t (*GetDouble)(const IVXPropertySet2* self, const char16_t* key, double* value);
    int32_t (*GetCount)(const IVXPropertySet2* self, unsigned int* count);
    int32_t (*GetProperty)(const IVXPropertySet2* self, unsigned int index, IVXProperty** property);
    int32_t (*GetParent)(const IVXPropertySet2* self, IVXPropertySet** parent);
    int32_t (*Set)(IVXPropertySet2* self, const char16_t* key, IVXUnknown* value);
    /// The interface `iid` of the value, with a reference for the caller.
    int32_t (*Get)(const IVXPropertySet2* self, const char16_t* key, const _GUID* iid, void** result);
    int32_t (*GetProperty2)(const IVXPropertySet2* self, unsigned int index, IVXProperty2** property);
    int32_t (*GetParent2)(const IVXPropertySet2* self, IVXPropertySet2** parent);
} IVXPropertySet2Operations;
struct IVXPropertySet2 {
    const IVXPropertySet2Operations* operations;
};

        static const _GUID VX_IID_IVXPropertySet2
    = {0x11C372B2, 0xEEB2, 0x44BC, {0x8C, 0x61, 0xFC, 0xB0, 0x14, 0x5C, 0xC2, 0xD5}};
static inline int32_t IVXPropertySet2_QueryInterface(IVXPropertySet2* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXPropertySet2_AddRef(const IVXPropertySet2* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXPropertySet2_Release(const IVXPropertySet2* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXPropertySet2_SetString(IVXPropertySet2* self, const char16_t* key, const char16_t* value)
{
    return self->operations->SetString(self, key, value);
}
static inline int32_t IVXPropertySet2_GetString(const IVXPropertySet2* self, const char16_t* key, IVXCharBuffer* value)
{
    return self->operations->GetString(self, key, value);
}
static inline int32_t IVXPropertySet2_SetLong(IVXPropertySet2* self, const char16_t* key, int32_t value)
{
    return self->operations->SetLong(self, key, value);
}
static inline int32_t IVXPropertySet2_GetLong(const IVXPropertySet2* self, const char16_t* key, int32_t* value)
{
    return self->operations->GetLong(self, key, value);
}
static inline int32_t IVXPropertySet2_SetDouble(IVXPropertySet2* self, const char16_t* key, double value)
{
    return self->operations->SetDouble(self, key, value);
}
static inline int32_t IVXPropertySet2_GetDouble(const IVXPropertySet2* self, const char16_t* key, double* value)
{
    return self->operations->GetDouble(self, key, value);
}
static inline int32_t IVXPropertySet2_GetCount(const IVXPropertySet2* self, unsigned int* count)
{
    return self->operations->GetCount(self, count);
}
static inline int32_t IVXPropertySet2_GetProperty(
        const IVXPropertySet2* self, unsigned int index, IVXProperty** property)
{
    return self->operations->GetProperty(self, index, property);
}
static inline int32_t IVXPropertySet2_GetParent(const IVXPropertySet2* self, IVXPropertySet** parent)
{
    return self->operations->GetParent(self, parent);
}
static inline int32_t IVXPropertySet2_Set(IVXPropertySet2* self, const char16_t* key, IVXUnknown* value)
{
    return self->operations->Set(self, key, value);
}
static inline int32_t IVXPropertySet2_Get(
        const IVXPropertySet2* self, const char16_t* key, const _GUID* iid, void** result)
{
    return self->operations->Get(self, key, iid, result);
}
static inline int32_t IVXPropertySet2_GetProperty2(
        const IVXPropertySet2* self, unsigned int index, IVXProperty2** property)
{
    return self->operations->GetProperty2(self, index, property);
}
static inline int32_t IVXPropertySet2_GetParent2(const IVXPropertySet2* self, IVXPropertySet2** parent)
{
    return self->operations->GetParent2(self, parent);
}
static inline int32_t IVXPropertySet2_From(void* object, IVXPropertySet2** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXPropertySet2, &made);
    *out = (IVXPropertySet2*)made;
    return result;
}
static inline int32_t IVXPropertySet2_Create(const char16_t* progId, IVXPropertySet2** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXPropertySet2, &made);
    *out = (IVXPropertySet2*)made;
    return result;
}
static inline int32_t IVXPropertySet2_CreateClass(const _GUID* classId, IVXPropertySet2** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXPropertySet2, &made);
    *out = (IVXPropertySet2*)made;
    return result;
}

/// Texts of one locale by key. Keys are zero-terminated.
typedef struct IVXResourceBundleOperations {
    int32_t (*QueryInterface)(IVXResourceBundle* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXResourceBundle* self);
    uint32_t (*Release)(const IVXResourceBundle* self);
    /// Negative for a missing key.
    int32_t (*LoadCharBuffer)(const IVXResourceBundle* self, const char16_t* key, IVXCharBuffer* value);
    /// `*length` is the size of `value` in units. All of them are written, the unused ones with 0. If the text with its
    /// terminator fits, `*length` becomes their length; otherwise it does not change, and the text is truncated.
    int32_t (*LoadString)(const IVXResourceBundle* self, const char16_t* key, char16_t* value, uint32_t* length);
    int32_t (*GetCount)(const IVXResourceBundle* self, int32_t* count);
    /// The key at `index`, and its text if `value` is not null.
    int32_t (*GetResource)(const IVXResourceBundle* self, int32_t index, IVXCharBuffer* key, IVXCharBuffer* value);
    /// With a reference for the caller. Null with success if the bundle has none.
    int32_t (*GetLocale)(const IVXResourceBundle* self, IVXLocale** locale);
} IVXResourceBundleOperations;
struct IVXResourceBundle {
    const IVXResourceBundleOperations* operations;
};

        static const _GUID VX_IID_IVXResourceBundle
    = {0x0861D18E, 0x197F, 0x4E3A, {0xA0, 0x3F, 0x7C, 0xD0, 0x2F, 0x9A, 0x5C, 0x75}};
static inline int32_t IVXResourceBundle_QueryInterface(IVXResourceBundle* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXResourceBundle_AddRef(const IVXResourceBundle* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXResourceBundle_Release(const IVXResourceBundle* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXResourceBundle_LoadCharBuffer(
        const IVXResourceBundle* self, const char16_t* key, IVXCharBuffer* value)
{
    return self->operations->LoadCharBuffer(self, key, value);
}
static inline int32_t IVXResourceBundle_LoadString(
        const IVXResourceBundle* self, const char16_t* key, char16_t* value, uint32_t* length)
{
    return self->operations->LoadString(self, key, value, length);
}
static inline int32_t IVXResourceBundle_GetCount(const IVXResourceBundle* self, int32_t* count)
{
    return self->operations->GetCount(self, count);
}
static inline int32_t IVXResourceBundle_GetResource(
        const IVXResourceBundle* self, int32_t index, IVXCharBuffer* key, IVXCharBuffer* value)
{
    return self->operations->GetResource(self, index, key, value);
}
static inline int32_t IVXResourceBundle_GetLocale(const IVXResourceBundle* self, IVXLocale** locale)
{
    return self->operations->GetLocale(self, locale);
}
static inline int32_t IVXResourceBundle_From(void* object, IVXResourceBundle** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXResourceBundle, &made);
    *out = (IVXResourceBundle*)made;
    return result;
}
static inline int32_t IVXResourceBundle_Create(const char16_t* progId, IVXResourceBundle** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXResourceBundle, &made);
    *out = (IVXResourceBundle*)made;
    return result;
}
static inline int32_t IVXResourceBundle_CreateClass(const _GUID* classId, IVXResourceBundle** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXResourceBundle, &made);
    *out = (IVXResourceBundle*)made;
    return result;
}

/// Beside IVXCharCodec: an encoding from a component that converts many characters in one call. A codec has it for its
/// speed, or because its text has a state, such as shift sequences or a byte order mark: the codec keeps the state
/// between calls. So a codec serves one text in one direction. One thread at a time.
///
/// Both conversions stop before what they cannot convert. Their result codes:
/// - 0: all of the input is taken, except for an incomplete character at its end;
/// - RESULT_BUFFER_TOO_SMALL: there is no room for the next character;
/// - RESULT_UNMAPPABLE_CHARACTER: the next sequence has no character, or the next character has no bytes. The caller
///   replaces and passes over it. For the length of such a sequence it calls IVXCharCodec::ConvertBytes.
typedef struct IVXTextCodecOperations {
    int32_t (*QueryInterface)(IVXTextCodec* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXTextCodec* self);
    uint32_t (*Release)(const IVXTextCodec* self);
    /// `*length` is the number of bytes and becomes how many were taken; `*count` is the room in units and becomes how
    /// many were stored.
    int32_t (*Decode)(IVXTextCodec* self, const signed char* bytes, int32_t* length, char16_t* units, int32_t* count);
    /// The opposite. Halves of surrogate pairs are characters without bytes, unless the encoding has such; the first
    /// half of a pair at the end is incomplete.
    int32_t (*Encode)(IVXTextCodec* self, const char16_t* units, int32_t* length, signed char* bytes, int32_t* count);
    /// Stores the bytes that lead back to the initial state, all or none.
    int32_t (*EndText)(IVXTextCodec* self, signed char* bytes, int32_t* count);
    /// The next call begins a new text.
    int32_t (*Reset)(IVXTextCodec* self);
} IVXTextCodecOperations;
struct IVXTextCodec {
    const IVXTextCodecOperations* operations;
};

        static const _GUID VX_IID_IVXTextCodec
    = {0x3B0C65A7, 0x91DE, 0x4F28, {0x8A, 0x6B, 0xD5, 0x12, 0x7E, 0x40, 0xC9, 0x33}};
static inline int32_t IVXTextCodec_QueryInterface(IVXTextCodec* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXTextCodec_AddRef(const IVXTextCodec* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXTextCodec_Release(const IVXTextCodec* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXTextCodec_Decode(
        IVXTextCodec* self, const signed char* bytes, int32_t* length, char16_t* units, int32_t* count)
{
    return self->operations->Decode(self, bytes, length, units, count);
}
static inline int32_t IVXTextCodec_Encode(
        IVXTextCodec* self, const char16_t* units, int32_t* length, signed char* bytes, int32_t* count)
{
    return self->operations->Encode(self, units, length, bytes, count);
}
static inline int32_t IVXTextCodec_EndText(IVXTextCodec* self, signed char* bytes, int32_t* count)
{
    return self->operations->EndText(self, bytes, count);
}
static inline int32_t IVXTextCodec_Reset(IVXTextCodec* self)
{
    return self->operations->Reset(self);
}
static inline int32_t IVXTextCodec_From(void* object, IVXTextCodec** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXTextCodec, &made);
    *out = (IVXTextCodec*)made;
    return result;
}
static inline int32_t IVXTextCodec_Create(const char16_t* progId, IVXTextCodec** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXTextCodec, &made);
    *out = (IVXTextCodec*)made;
    return result;
}
static inline int32_t IVXTextCodec_CreateClass(const _GUID* classId, IVXTextCodec** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXTextCodec, &made);
    *out = (IVXTextCodec*)made;
    return result;
}

/// Creates both from properties. Each transport has its own keys.
typedef struct IVXTransportOperations {
    int32_t (*QueryInterface)(IVXTransport* self, const _GUID* iid, void** out);
    uint32_t (*AddRef)(const IVXTransport* self);
    uint32_t (*Release)(const IVXTransport* self);
    int32_t (*CreateAcceptor)(IVXTransport* self, const IPropertySet* properties, const _GUID* iid, void** result);
    int32_t (*CreateConnector)(IVXTransport* self, const IPropertySet* properties, const _GUID* iid, void** result);
} IVXTransportOperations;
struct IVXTransport {
    const IVXTransportOperations* operations;
};

        static const _GUID VX_IID_IVXTransport
    = {0x9D15C6B0, 0xED08, 0x4D46, {0xB6, 0x97, 0x8D, 0x00, 0xA5, 0x8F, 0x56, 0x60}};
static inline int32_t IVXTransport_QueryInterface(IVXTransport* self, const _GUID* iid, void** out)
{
    return self->operations->QueryInterface(self, iid, out);
}
static inline uint32_t IVXTransport_AddRef(const IVXTransport* self)
{
    return self->operations->AddRef(self);
}
static inline uint32_t IVXTransport_Release(const IVXTransport* self)
{
    return self->operations->Release(self);
}
static inline int32_t IVXTransport_CreateAcceptor(
        IVXTransport* self, const IPropertySet* properties, const _GUID* iid, void** result)
{
    return self->operations->CreateAcceptor(self, properties, iid, result);
}
static inline int32_t IVXTransport_CreateConnector(
        IVXTransport* self, const IPropertySet* properties, const _GUID* iid, void** result)
{
    return self->operations->CreateConnector(self, properties, iid, result);
}
static inline int32_t IVXTransport_From(void* object, IVXTransport** out)
{
    void* made = 0;
    const int32_t result = IVXUnknown_QueryInterface((IVXUnknown*)object, &VX_IID_IVXTransport, &made);
    *out = (IVXTransport*)made;
    return result;
}
static inline int32_t IVXTransport_Create(const char16_t* progId, IVXTransport** out)
{
    void* made = 0;
    const int32_t result = VXComCreateObjectByProgID(progId, 0, &VX_IID_IVXTransport, &made);
    *out = (IVXTransport*)made;
    return result;
}
static inline int32_t IVXTransport_CreateClass(const _GUID* classId, IVXTransport** out)
{
    void* made = 0;
    const int32_t result = VXModuleComCreateObject(0, classId, 0, &VX_IID_IVXTransport, &made);
    *out = (IVXTransport*)made;
    return result;
}

#ifdef __cplusplus
} // extern "C"
} // namespace vx::c
#endif
