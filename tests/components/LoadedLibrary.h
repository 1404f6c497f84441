#pragma once

#include "tests/vx/Offer.h"
#include "vx/io/ByteBuffer.h"
#include "vx/io/IChannel.h"
#include "vx/vorb/IVXClassFactory.h"
#include "vxsys/Module.h"

#include <gtest/gtest.h>

#include <string>

namespace vx {

/// A component library in this process. The test offers its classes by ProgID, as registration would.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const char* path)
    {
        EXPECT_EQ(VXModuleLibOpen(nullptr, String(path).getData(), &m_handle), RESULT_OK) << path;
        getClassObject = get<std::int32_t (*)(const _GUID*, const _GUID*, void**)>(u"VXGetClassObject");
        canUnloadNow = get<std::int32_t (*)()>(u"VXCanUnloadNow");
    }
    ~LoadedLibrary()
    {
        EXPECT_EQ(canUnloadNow(), RESULT_OK) << "something of the library is still in use";
        VXModuleLibClose(nullptr, m_handle);
    }

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

inline Offer::Make creatorOf(const LoadedLibrary& library, const _GUID& classId)
{
    return [&library, classId] {
        Reference<IVXClassFactory> factory;
        Reference<IVXUnknown> object;
        EXPECT_EQ(library.getClassObject(&classId, &IVXClassFactory::IID, factory.outVoid()), RESULT_OK);
        EXPECT_EQ(factory->CreateInstance(nullptr, IVXUnknown::IID, object.outVoid()), RESULT_OK);
        return object;
    };
}

inline std::string readFrom(io::IChannel& channel, unsigned int length)
{
    io::ByteBuffer buffer(length, io::VX_ENDIAN_LITTLE, false);
    while (buffer.remaining() > 0 && channel.read(buffer) >= 0) { }
    return {reinterpret_cast<const char*>(buffer.getConstBuffer()), buffer.getPosition()};
}

inline void writeTo(io::IChannel& channel, const std::string& text)
{
    io::ByteBuffer buffer(reinterpret_cast<const signed char*>(text.data()), static_cast<unsigned int>(text.size()),
        io::VX_ENDIAN_LITTLE);
    while (buffer.remaining() > 0)
        channel.write(buffer);
}

} // namespace vx
