#pragma once

#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/vorb/IVXClassFactory.h"
#include "vxsys/Component.h"
#include "vxsys/Module.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace vx {

/// A component library in the process, whose classes its test offers by ProgID as registration would.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const char* path)
    {
        EXPECT_EQ(VXModuleLibOpen(nullptr, String(path).getData(), &m_handle), RESULT_OK) << path;
        getClassObject = get<std::int32_t (*)(const _GUID*, const _GUID*, void**)>(u"VXGetClassObject");
        canUnloadNow = get<std::int32_t (*)()>(u"VXCanUnloadNow");
        EXPECT_NE(get<void*>(u"VXRegisterServer"), nullptr);
        EXPECT_NE(get<void*>(u"VXUnregisterServer"), nullptr);
    }
    ~LoadedLibrary()
    {
        EXPECT_EQ(canUnloadNow(), RESULT_OK) << "something of the library is still in use";
        VXModuleLibClose(nullptr, m_handle);
    }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    std::int32_t (*getClassObject)(const _GUID*, const _GUID*, void**) = nullptr;
    std::int32_t (*canUnloadNow)() = nullptr;

private:
    template <class Function>
    Function get(const char16_t* name)
    {
        void* symbol = nullptr;
        EXPECT_EQ(VXLibGetSymbol(m_handle, name, &symbol), RESULT_OK);
        return reinterpret_cast<Function>(symbol);
    }

    VXLibHandle m_handle = VX_LIB_INVALID_HANDLE;
};

/// Offers one class of a loaded library under `progId` to the end of the block.
class LoadedClass {
public:
    LoadedClass(const LoadedLibrary& library, const char16_t* progId, const _GUID& classId)
        : m_library(library)
        , m_classId(classId)
    {
        EXPECT_EQ(VXComRegisterClassObject(progId, &m_classId, create, this, &m_token), RESULT_OK);
    }
    ~LoadedClass() { EXPECT_EQ(VXComRevokeClassObject(m_token), RESULT_OK); }
    LoadedClass(const LoadedClass&) = delete;
    LoadedClass& operator=(const LoadedClass&) = delete;

private:
    static std::int32_t create(void* context, IVXUnknown* outer, const _GUID* iid, void** object)
    {
        const auto& own = *static_cast<LoadedClass*>(context);
        Reference<IVXClassFactory> factory;
        const std::int32_t result
            = own.m_library.getClassObject(&own.m_classId, &IVXClassFactory::IID, factory.outVoid());
        return result < 0 ? result : factory->CreateInstance(outer, *iid, object);
    }

    const LoadedLibrary& m_library;
    const _GUID m_classId;
    std::uint32_t m_token = 0;
};

} // namespace vx
